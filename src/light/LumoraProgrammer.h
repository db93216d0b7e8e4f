#pragma once

#include "eeprom/GenericEEPROMProgrammer.h"
#include "light/LumoraTransfers.h"

#include <deque>

namespace corvane {

/// Takes a light program into the controller that hangs on the link. Made anew for each run.
/// Nothing is sent before `ProgrammingStarted`. `outcome` is that of the run as soon as an end
/// event has come, and told by whoever shows the run.
class LumoraProgrammer final : public ProductJob {
  public:
    LumoraProgrammer(const Workplace& place, const LumoraDocument& document)
        : ProductJob(place), document_(document) {}

    Event<> Connected;
    Event<> ConnectionFailed; ///< The run is over.
    Event<const std::string&> DebugPrint;
    Event<> ProgrammingComplete;                     ///< The run is over.
    Event<> ProgrammingCanceled;                     ///< The run is over.
    Event<> ProgrammingFailed;                       ///< The run is over.
    Event<int, int> ProgrammingFailedDueToCodeSpace; ///< Blocks used, and the limit. Over too.
    Event<int, int> ProgrammingStarted;              ///< Blocks used, and the limit.
    Event<> ProgressChanged;

    static constexpr const char* Complete = "Programming complete.";

    /// A whole run, from the connection to its end.
    [[nodiscard]] JobOutcome run();

    /// Begins a run, which `Update` and the link's `Update` go on with until an end event has come;
    /// the newer controller's is over when this returns.
    void BeginProgramming();
    /// Watches for the reply that does not come.
    void Update();
    /// 0 to 100.
    [[nodiscard]] int Progress() const;

  private:
    void ProcessPacket(const KOPacket& packet) override;
    void programTransfers();
    void programImage();
    [[nodiscard]] bool endsHere(const LumoraCompiled& compiled);
    void SendNextTransfer();
    void RetryTransfer(int weight, const std::string& cure);
    void FailProgramming(const std::string& cure);
    void CancelProgramming();
    /// Lets the controller go; the end event is raised behind it.
    void end(JobOutcome outcome, bool pleaseReset = false);
    void FailForCodeSpace(int blocksUsed);
    void FinishProgramming();

    const LumoraDocument& document_;
    std::unique_ptr<GenericEEPROMProgrammer> EepWriter_; // for the newer controller only
    int readPosition_ = 0;
    int readTotal_ = 0;
    int writePosition_ = 0;
    int writeTotal_ = 0;
    std::deque<LumoraTransfer> queue_; // not acknowledged, the next one first
    int transferTotal_ = 0;
    int retryCount_ = 0; // spent of the budget of the transfer at the head
    std::uint32_t sentAt_ = 0;
    bool over_ = false;
    Connection onReading_;
    Connection onWriting_;
};

} // namespace corvane
