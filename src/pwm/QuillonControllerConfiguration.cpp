#include "pwm/QuillonControllerConfiguration.h"

#include "pwm/QuillonControl.h"

#include <utility>

namespace corvane {

void QuillonControllerConfiguration::Initialize(QuillonControl& control,
                                                std::uint8_t receiverNumber) {
    control_ = &control;
    receiverNumber_ = receiverNumber;
    for (std::size_t index = 0; index < optReceiver.size(); ++index) {
        OptionButton& option = optReceiver[index];
        option.setValue(index == receiverNumber);
        option.setToolTipText("The controller listens to this receiver");
        on_(option.Click, [this, index] {
            for (std::size_t other = 0; other < optReceiver.size(); ++other)
                optReceiver[other].setValue(other == index);
            receiverNumber_ = static_cast<std::uint8_t>(index);
        });
    }
    OKButton.setToolTipText("Put the setting into the controller");
    CancelButton.setToolTipText("Leave the controller as it is");
    on_(OKButton.Click, [this] { accept(); });
    on_(CancelButton.Click, [this] { Close(); });
}

void QuillonControllerConfiguration::accept() {
    if (control_->WriteOptions(receiverNumber_))
        Close();
}

void QuillonControllerConfiguration::Close() {
    if (std::exchange(open_, false))
        Closed.raise();
}

} // namespace corvane
