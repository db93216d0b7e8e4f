#include "link/KOInterface.h"

namespace corvane {

KOInterface::KOInterface(KOCommLink& link)
    : link_(link),
      onClass_(link.ClassChanged.connect([this] {
          SelectUI(link_.Class());
          updateReadyState();
      })),
      onReady_(link.ReadyStateChanged.connect([this] { updateReadyState(); })),
      onPacket_(link.PacketReceived.connect([this](const KOPacket& packet) {
          if (control_ != nullptr)
              control_->ProcessPacket(packet);
      })),
      onChanging_(changer_.ClassChanging.connect([this](const std::string& newClass) {
          const std::string kept = newClass; // it may belong to the control that goes
          SelectUI(kept);
      })) {}

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
    class_ = newClass;
    InterfaceSwapRequested.raise(control_, newClass);
    history_ = nullptr;
    if (control_ != nullptr) {
        control_->setInterfaceChanger(changer_);
        history_ = control_->HistoryObject();
    }
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
