#pragma once

#include "eeprom/GenericEEPROMProgrammer.h"
#include "light/LumoraTransfers.h"

#include <deque>

namespace corvane {

/// Takes a light program into the controller that hangs on the link. Made anew for each run. Its
/// owner passes on every packet, and calls the link's and its own `Update` until an end event has
/// come; the newer controller's run is over when `BeginProgramming` returns. Nothing is sent
/// before `ProgrammingStarted`.
class LumoraProgrammer {
  public:
    LumoraProgrammer(const Workplace& place, const LumoraDocument& document);
    LumoraProgrammer(const LumoraProgrammer&) = delete;
    LumoraProgrammer& operator=(const LumoraProgrammer&) = delete;

    Event<> Connected;
    Event<> ConnectionFailed; ///< The run is over.
    Event<const std::string&> DebugPrint;
    Event<> ProgrammingComplete;                     ///< The run is over.
    Event<> ProgrammingCanceled;                     ///< The run is over.
    Event<> ProgrammingFailed;                       ///< The run is over.
    Event<int, int> ProgrammingFailedDueToCodeSpace; ///< Blocks used, and the limit. Over too.
    Event<int, int> ProgrammingStarted;              ///< Blocks used, and the limit.
    Event<> ProgressChanged;

    void BeginProgramming();
    void ProcessPacket(const KOPacket& packet);
    /// Watches for the reply that does not come.
    void Update();
    /// 0 to 100.
    [[nodiscard]] int Progress() const;

  private:
    void programTransfers();
    void programImage();
    [[nodiscard]] bool endsHere(const LumoraCompiled& compiled);
    void SendNextTransfer();
    void RetryTransfer(int weight);
    void FailProgramming();
    void CancelProgramming();
    void FailForCodeSpace(int blocksUsed);
    void FinishProgramming();

    Workplace with_;
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
    Connection onReading_;
    Connection onWriting_;
};

} // namespace corvane
