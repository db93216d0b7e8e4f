#include "update/UpdateInstaller.h"

namespace corvane {

namespace {

constexpr const char* WaitingMark = "Update";

using Kind = InstallOutcome::Kind;
using RecordState = UpdateRecord::State;

} // namespace

bool UpdateInstaller::takeMark() const {
    const auto present = with_.registry.OpenSettingsForReading();
    if (!present || present->Integers(WaitingMark) != 1)
        return false;
    auto key = with_.registry.OpenSettingsForWriting();
    return key && key->DeleteValue(WaitingMark);
}

bool UpdateInstaller::acquire() const {
    constexpr int mostWaits = 100;
    for (int i = 0; i < mostWaits; ++i) {
        if (with_.record.acquire())
            return true;
        with_.wait();
    }
    return false;
}

bool UpdateInstaller::run() {
    // The mark goes first, whatever comes: what takes the program down must not be begun anew by
    // every start.
    if (!takeMark())
        return false;
    if (!acquire()) {
        with_.record.log("no update was installed: another Corvane is at work on it");
        return false;
    }
    UpdateRecord record = with_.record.load();
    const auto update = record.update();
    bool done = false;
    if (record.state == RecordState::Ready && update) {
        const InstallOutcome outcome = install(*update, record);
        done = outcome.kind == Kind::Done;
        with_.record.log(done ? update->version + " is installed"
                              : update->version + " was not installed: " + outcome.why);
        if (!done)
            tell(outcome);
    } else {
        with_.record.log("an update is marked, and none is ready");
    }
    with_.record.release();
    return done;
}

InstallOutcome UpdateInstaller::install(const UpdateManifest& update, UpdateRecord& record) const {
    const auto note = [&](RecordState state, const std::string& why) {
        record.state = state;
        record.why = why;
        return with_.record.save(record);
    };
    InstallOutcome outcome;
    const bool there = with_.isInstalled(update);
    // Looked at here as well as at the download: it has lain in a folder of the person's since.
    if (!there)
        outcome = {Kind::Refused, with_.whatIsWrong(update)};
    if (!there && outcome.why.empty())
        outcome = note(RecordState::Installing, {})
                      ? with_.install(update)
                      : InstallOutcome{Kind::NotNow, "how it stands can't be written down"};
    const bool over = outcome.kind == Kind::Done || outcome.kind == Kind::Refused;
    if (over)
        with_.clear();
    // What was interrupted is looked at by the program itself, which then knows its version.
    if (outcome.kind != Kind::Interrupted)
        static_cast<void>(note(over ? RecordState::Nothing : RecordState::Ready, outcome.why));
    return outcome;
}

void UpdateInstaller::tell(const InstallOutcome& outcome) const {
    if (outcome.kind == Kind::Refused)
        with_.dialogs.ShowError("The update that was downloaded is not one to be installed (" +
                                outcome.why +
                                ").\r\n\r\nIt is deleted. Corvane goes on as it is, and looks "
                                "for a new version again.");
    else
        with_.dialogs.ShowError(
            "The update could not be installed (" + outcome.why +
            ").\r\n\r\nThe version that you have goes on working. The update is kept: click "
            "Restart in Corvane to try again.");
}

} // namespace corvane
