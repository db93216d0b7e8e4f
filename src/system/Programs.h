#pragma once

#include <string>
#include <vector>

namespace corvane {

/// Programs beside the running one, by the names that they are asked for under everywhere.
/// `SystemPrograms` alone knows what they are called on this system.
namespace ProgramFile {
inline constexpr const char* Own = "Corvane.exe";
inline constexpr const char* DriverInstaller = "Install Drivers.exe";
} // namespace ProgramFile

/// Starts other programs. They live on when this one ends.
class Programs {
  public:
    virtual ~Programs() = default;
    /// Starts a program of this system by its full path. False if it can't be started.
    [[nodiscard]] virtual bool Start(const std::string& path, const std::string& arguments) = 0;
    /// Lets the desktop open an address or document with what is meant for it.
    virtual void OpenInBrowser(const std::string& target) = 0;
    /// The folder of the running program, with a separator at its end.
    [[nodiscard]] virtual std::string ProgramDirectory() const = 0;
};

/// The programs of this machine. Names in the form "Corvane.exe" mean the program of that name
/// without the ending, in lower case if there is no other; "Corvane.exe" itself the starter beside
/// it, if there is one, which installs a waiting update first.
class SystemPrograms final : public Programs {
  public:
    [[nodiscard]] bool Start(const std::string& path, const std::string& arguments) override;
    void OpenInBrowser(const std::string& target) override;
    [[nodiscard]] std::string ProgramDirectory() const override;
};

/// Runs one of the system's tools to its end, without a word from it. What it is missing or fails
/// at is not told.
void RunQuietly(const std::vector<std::string>& words);

/// Full path of the running program. An ending ".bin", in any case, is given as ".exe".
[[nodiscard]] std::string KOIOExecutablePath();
/// The same for a given path of a program file; empty above 4095 bytes.
[[nodiscard]] std::string ExecutablePathFor(std::string programFile);

} // namespace corvane
