#pragma once

#include "bench/LinkServer.h"
#include "bench/VirtualLink.h"
#include "kolib/devices/VirtualLinkSource.h"
#include "support/EmptyDesk.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace corvane {

/// A folder of virtual links of our own, as long as it lasts.
class LinkFolder {
  public:
    LinkFolder() {
        if (::mkdtemp(name_.data()) == nullptr)
            std::abort();
        ::setenv("CORVANE_BENCH_DIR", name_.c_str(), 1);
    }
    ~LinkFolder() { std::filesystem::remove_all(name_); }
    LinkFolder(const LinkFolder&) = delete;
    LinkFolder& operator=(const LinkFolder&) = delete;

  private:
    std::string name_ = "/tmp/corvane-links-XXXXXX";
};

/// A virtual product in a process of its own.
class VirtualProduct {
  public:
    VirtualProduct(const char* product, int baud, std::chrono::microseconds writeTime) {
        child_ = ::fork();
        if (child_ != 0)
            return;
        std::string error;
        bench::Setup setup;
        setup.writeTime = writeTime;
        bench::VirtualLink link(std::move(*bench::makeBench(product, setup, error)), {}, baud, 1,
                                nullptr);
        bench::LinkServer server(link, bench::LinkServer::userFolder(), product);
        if (server.start().empty())
            server.run();
        ::_exit(0);
    }
    ~VirtualProduct() {
        ::kill(child_, SIGTERM);
        ::waitpid(child_, nullptr, 0);
    }
    VirtualProduct(const VirtualProduct&) = delete;
    VirtualProduct& operator=(const VirtualProduct&) = delete;

  private:
    pid_t child_ = -1;
};

[[nodiscard]] inline EmptyDesk::Sources VirtualLinks(const Clock& clock) {
    EmptyDesk::Sources sources;
    sources.push_back(std::make_unique<VirtualLinkSource>(VirtualLinkSource::userFolder(), clock));
    return sources;
}

} // namespace corvane
