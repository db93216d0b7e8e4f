#pragma once

#include <string>

namespace corvane {

/// What has become of a job with the product, and why. The same for the window and the console.
struct JobOutcome {
    enum class Reason {
        Done,
        Canceled,     ///< The person has said No.
        NoLink,       ///< No link is plugged in, or it has gone.
        LinkBusy,     ///< Another program has it.
        Forbidden,    ///< The system does not let it be opened.
        NoAnswer,     ///< Nothing behind the link answers.
        NoIdentity,   ///< The product answers, but does not say what it is.
        OtherProduct, ///< It is not what the job is for.
        Unfit,        ///< The document can't go into this product.
        Failed,       ///< The link or the product has failed on the way.
    };

    Reason reason = Reason::Done;
    std::string text;  ///< What happened, in the words of the screen.
    std::string cure;  ///< What is there instead, and what to do; may be empty.
    bool told = false; ///< A box has told it already.

    [[nodiscard]] bool done() const { return reason == Reason::Done; }
    /// As a box shows it: the cure under the text.
    [[nodiscard]] std::string inWords() const {
        return cure.empty() ? text : text + "\r\n\r\n" + cure;
    }
};

/// Of a job that was asked for while another one of its kind was at work.
[[nodiscard]] inline JobOutcome AnotherJobRuns() {
    return {JobOutcome::Reason::LinkBusy, "Another job is at work.", {}};
}

} // namespace corvane
