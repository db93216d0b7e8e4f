#pragma once

#include "bench/LinkProtocol.h"
#include "bench/OutputScreen.h"
#include "bench/VirtualLink.h"

#include <filesystem>
#include <list>

namespace corvane::bench {

/// Offers a virtual link at a local socket until a signal ends it: SIGINT and SIGTERM end it
/// cleanly, SIGUSR1 pulls the plug or puts it back.
class LinkServer {
  public:
    LinkServer(VirtualLink& link, std::filesystem::path folder, std::string name);
    ~LinkServer();
    LinkServer(const LinkServer&) = delete;
    LinkServer& operator=(const LinkServer&) = delete;

    /// The folder of the user's virtual links.
    [[nodiscard]] static std::filesystem::path userFolder();

    /// Makes the folder if need be and plugs the link in. A socket that a killed bench left is
    /// replaced. What is wrong, or nothing.
    [[nodiscard]] std::string start();
    /// Shows the product's outputs while it serves. The screen must outlive the serving.
    void setScreen(OutputScreen& screen) { screen_ = &screen; }
    /// Serves until a signal comes, or the person at the screen ends it.
    void run();

  private:
    struct Connection {
        int descriptor = -1;
        MessageReader reader;
        Bytes waiting;         // to be sent
        bool readable = false; // there may be something to read
        bool open = false;
        bool ended = false;
    };

    [[nodiscard]] std::string prepareFolder() const;
    [[nodiscard]] bool somebodyListens() const;
    [[nodiscard]] std::string plugIn();
    void unplug();
    [[nodiscard]] bool handleSignals();
    void accept();
    void receive(Connection& connection);
    void act(Connection& connection, const Message& message);
    void flush(Connection& connection);
    void dropEnded();
    [[nodiscard]] Time now() const;
    [[nodiscard]] bool attendScreen();
    void wait();
    [[nodiscard]] Connection* opened();

    VirtualLink& link_;
    std::filesystem::path folder_;
    std::filesystem::path socketPath_;
    int listener_ = -1;
    int signals_ = -1;
    bool signalled_ = false;
    bool knocked_ = false; // somebody wants to connect
    bool typed_ = false;   // a key has been pressed
    OutputScreen* screen_ = nullptr;
    std::list<Connection> connections_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

} // namespace corvane::bench
