#pragma once

#include "link/KOCommLink.h"
#include "link/ProductControl.h"

#include <memory>

namespace corvane {

/// Through this a control asks for another control.
class KOInterfaceChanger {
  public:
    Event<const std::string&> ClassChanging;

    void setClass(const std::string& newClass) const { ClassChanging.raise(newClass); }
};

/// Decides which product control shows: makes it for a class name through whoever answers
/// `InterfaceSwapRequested`, and passes the link's packets and ready changes on to it. The link
/// must outlive it.
class KOInterface {
  public:
    explicit KOInterface(KOCommLink& link);
    KOInterface(const KOInterface&) = delete;
    KOInterface& operator=(const KOInterface&) = delete;

    Event<> InterfaceChanged;
    /// Holds the old control, perhaps none; the answer puts the new one in its place.
    Event<std::unique_ptr<ProductControl>&, const std::string&> InterfaceSwapRequested;

    /// Shows the control of `classToOpen`, or of the link's class if that is empty.
    void Initialize(const std::string& classToOpen);
    /// Shows that control in place of the one on show, which is not asked.
    void Show(const std::string& newClass);
    /// Does nothing if that control shows already, or if the one on show does not make way.
    void SelectUI(const std::string& newClass);

    [[nodiscard]] KOInterfaceChanger& InterfaceChanger() { return changer_; }
    /// Class name of the control on show; empty at first.
    [[nodiscard]] const std::string& InterfaceClass() const { return class_; }
    [[nodiscard]] History* InterfaceHistory() const { return history_; }
    /// The product behind the link is the one that the control is for.
    [[nodiscard]] bool InterfaceReady() const { return class_ == link_.Class(); }
    [[nodiscard]] KOCommLink& Link() const { return link_; }
    [[nodiscard]] bool ready() const { return InterfaceReady() && link_.ready(); }
    [[nodiscard]] ProductControl* control() const { return control_.get(); }

  private:
    void swap(const std::string& newClass);
    void updateReadyState();

    KOCommLink& link_;
    KOInterfaceChanger changer_;
    std::unique_ptr<ProductControl> control_;
    std::string class_;
    History* history_ = nullptr;
    bool reportedReady_ = false;
    Connections on_;
};

} // namespace corvane
