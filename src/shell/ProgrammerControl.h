#pragma once

#include "controls/JobButtons.h"
#include "link/ProductControl.h"
#include "link/Workplace.h"

namespace corvane {

/// The screen for a production run of links: writes a link's strings into one blank chip after
/// another, as they are plugged in.
class ProgrammerControl final : public ProductControl {
  public:
    explicit ProgrammerControl(const Workplace& place);

    void UpdateReadyState(bool ready) override;

    Button Logo;
    Button ProgramButton{"Program EEPROM"};
    Label StateLabel;

  private:
    void program();

    Workplace place_;
    JobButtons jobs_{place_.pointer};
    Connections on_;
};

} // namespace corvane
