#pragma once

#include "controls/ChildControl.h"
#include "link/KOInterface.h"
#include "link/Workplace.h"

namespace corvane {

/// The start screen: asks to plug in a product or to choose one, and lets the link look for
/// products by itself. Makes way for any other control.
class DefaultControl final : public ProductControl {
  public:
    explicit DefaultControl(const Workplace& place);

    void UpdateReadyState(bool) override {}
    bool UnloadUI() override { return true; }
    void setInterfaceChanger(KOInterfaceChanger& changer) override { changer_ = &changer; }

    Button Logo;
    Button LumoraPicture{"Lumora"};
    Button DervanPicture{"Dervan/Maltrex"};

  private:
    void choose(const char* className) const;

    KOInterfaceChanger* changer_ = nullptr;
    Connections on_;
};

} // namespace corvane
