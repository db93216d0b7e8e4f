#include "link/KOInterface.h"

namespace corvane {

KOInterface::KOInterface(KOCommLink& link) : link_(link) {
    on_(link.ClassChanged, [this] {
        SelectUI(link_.Class());
        updateReadyState();
    });
    on_(link.ReadyStateChanged, [this] { updateReadyState(); });
    on_(link.PacketReceived, [this](const KOPacket& packet) {
        if (control_ != nullptr)
            control_->ProcessPacket(packet);
    });
    on_(changer_.ClassChanging, [this](const std::string& newClass) {
        const std::string kept = newClass; // it may belong to the control that goes
        SelectUI(kept);
    });
}

void KOInterface::Initialize(const std::string& classToOpen) {
    SelectUI(classToOpen.empty() ? link_.Class() : classToOpen);
    updateReadyState();
}

void KOInterface::SelectUI(const std::string& newClass) {
    if (newClass == class_)
        return;
    if (control_ == nullptr || control_->UnloadUI())
        swap(newClass);
    updateReadyState();
}

void KOInterface::Show(const std::string& newClass) {
    if (newClass != class_)
        swap(newClass);
    updateReadyState();
}

void KOInterface::swap(const std::string& newClass) {
    // The class first: making the control may raise events of the link, and whoever hears them asks
    // which class shows.
    class_ = newClass;
    InterfaceSwapRequested.raise(control_, newClass);
    history_ = nullptr;
    if (control_ != nullptr) {
        control_->setInterfaceChanger(changer_);
        history_ = control_->HistoryObject();
    }
    // Shown last, when the window has laid it out.
    InterfaceChanged.raise();
    if (control_ != nullptr)
        control_->setVisible(true);
}

void KOInterface::updateReadyState() {
    const bool isReady = ready();
    if (isReady == reportedReady_)
        return;
    reportedReady_ = isReady;
    if (control_ != nullptr)
        control_->UpdateReadyState(isReady);
}

} // namespace corvane
