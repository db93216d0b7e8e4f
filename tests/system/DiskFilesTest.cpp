#include "system/DiskFiles.h"

#include "support/TemporaryFolder.h"
#include "system/File.h"
#include "system/Programs.h"

#include <gtest/gtest.h>

#include <array>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvane {
namespace {

namespace fs = std::filesystem;

std::size_t filesIn(const fs::path& folder) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

TEST(DiskFiles, ReplacesKeepingPermissionsAndFollowingLinks) {
    const TemporaryFolder folder;
    DiskFiles files;
    const std::string path = folder.file("a", "old");
    ::chmod(path.c_str(), 0640);
    EXPECT_TRUE(files.ReplaceWhole(path, "new"));
    EXPECT_EQ(folder.content("a"), "new");
    struct stat status {};
    ::stat(path.c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);

    fs::create_symlink("a", folder.path() / "link");
    EXPECT_TRUE(files.ReplaceWhole(folder.path() / "link", "through"));
    EXPECT_TRUE(fs::is_symlink(folder.path() / "link"));
    EXPECT_EQ(folder.content("a"), "through");
    fs::create_symlink(folder.path() / "later", folder.path() / "early"); // to nothing yet
    EXPECT_TRUE(files.ReplaceWhole(folder.path() / "early", "first"));
    EXPECT_EQ(folder.content("later"), "first");
    fs::create_symlink("loop", folder.path() / "loop");
    EXPECT_FALSE(files.ReplaceWhole(folder.path() / "loop", "x"));
    EXPECT_FALSE(files.ReplaceWhole(folder.path(), "x"));
    EXPECT_FALSE(files.ReplaceWhole("", "x"));
    EXPECT_FALSE(files.ReplaceWhole("/dev/null", "x"));
    EXPECT_EQ(filesIn(folder.path()), 5U); // nothing is left lying about
}

TEST(DiskFiles, TellsWhatCanNotBeRead) {
    const TemporaryFolder folder;
    DiskFiles files;
    std::string bytes;
    EXPECT_EQ(files.ReadWhole(folder.path() / "none", bytes), FileDoor::ReadResult::NotFound);
    EXPECT_EQ(files.ReadWhole("", bytes), FileDoor::ReadResult::NotFound);
    EXPECT_EQ(files.ReadWhole(folder.path(), bytes), FileDoor::ReadResult::Failed);
    ::mkfifo((folder.path() / "pipe").c_str(), 0600);
    EXPECT_EQ(files.ReadWhole(folder.path() / "pipe", bytes), FileDoor::ReadResult::Failed);
    EXPECT_EQ(files.ReadWhole(folder.file("a", std::string("b\0c", 3)), bytes),
              FileDoor::ReadResult::Done);
    EXPECT_EQ(bytes, std::string("b\0c", 3));
}

/// A small file system of its own in a process of its own, since mounting needs rights and must
/// not show outside. Exit status 0 if `work` is content, 77 if there may be no such file system.
template<class Work>
int onSmallFileSystem(Work work) {
    const TemporaryFolder folder;
    const pid_t child = ::fork();
    if (child == 0) {
        const bool mayMount =
            (::unshare(CLONE_NEWNS) == 0 || ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
            ::mount("tmpfs", folder.path().c_str(), "tmpfs", 0, "size=64k") == 0;
        ::_exit(!mayMount ? 77 : work(folder) ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(DiskFiles, AFullFileSystemOrOneForReadingKeepsTheOldContent) {
    const int result = onSmallFileSystem([](const TemporaryFolder& folder) {
        DiskFiles files;
        const std::string path = folder.file("a", "old");
        const auto kept = [&](const std::string& content) {
            return !files.ReplaceWhole(path, content) && folder.content("a") == "old" &&
                   filesIn(folder.path()) == 1;
        };
        const bool whenFull = kept(std::string(100000, 'x'));
        ::mount(nullptr, folder.path().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr);
        return whenFull && kept("new") && !files.ReplaceWhole(folder.path() / "b", "new");
    });
    if (result == 77)
        GTEST_SKIP() << "no file system may be mounted here";
    EXPECT_EQ(result, 0);
}

TEST(ExecutablePath, HasTheEndingOfAProgram) {
    EXPECT_EQ(ExecutablePathFor("/opt/PROGRAM.BIN"), "/opt/PROGRAM.exe");
    EXPECT_EQ(ExecutablePathFor("/opt/program.bin2"), "/opt/program.bin2");
    EXPECT_EQ(ExecutablePathFor("bin"), "bin");
    EXPECT_EQ(ExecutablePathFor(std::string(4096, 'x')), "");
    EXPECT_EQ(KOIOFilename(KOIOExecutablePath()), "core_test");
    EXPECT_EQ(SystemPrograms().ProgramDirectory() + "core_test", KOIOExecutablePath());
}

TEST(SystemPrograms, StartTheProgramThatAFamiliarNameStandsFor) {
    const TemporaryFolder folder;
    SystemPrograms programs;
    const std::string at = folder.path().string() + "/";
    for (const auto& [familiar, name, words] :
         {std::array{"Install Drivers.exe", "Install Drivers", ""},
          {"Corvane.exe", "corvane", "-debug2"}}) {
        ::chmod(folder.file(name, "#!/bin/sh\nprintf '%s.' \"$*\" >\"$0.out\"\n").c_str(), 0700);
        EXPECT_TRUE(programs.Start(at + familiar, words));
        const std::string out = std::string(name) + ".out";
        for (int i = 0; i < 2000 && folder.content(out).empty(); ++i)
            ::usleep(1000);
        EXPECT_EQ(folder.content(out), std::string(words) + ".");
    }
    EXPECT_FALSE(programs.Start(at + "Missing.exe", ""));
}

} // namespace
} // namespace corvane
