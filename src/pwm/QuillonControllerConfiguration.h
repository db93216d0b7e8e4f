#pragma once

#include "controls/Inputs.h"

#include <array>

namespace corvane {

class QuillonControl;

/// The dialog for the one setting of the PWM product: which receiver it listens to.
class QuillonControllerConfiguration {
  public:
    /// `receiverNumber` is what the product says, counted from 0; one above 2 selects no option.
    /// The control must outlive the dialog.
    void Initialize(QuillonControl& control, std::uint8_t receiverNumber);

    Event<> Closed; ///< The dialog is over and goes away. Raised once.
    void Close();

    std::array<OptionButton, 3> optReceiver{OptionButton("1"), OptionButton("2"),
                                            OptionButton("3")};
    Button OKButton{"OK"};
    Button CancelButton{"Cancel"};

  private:
    void accept();

    QuillonControl* control_ = nullptr;
    std::uint8_t receiverNumber_ = 0;
    bool open_ = true;
    Connections on_;
};

} // namespace corvane
