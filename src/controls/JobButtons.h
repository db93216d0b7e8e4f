#pragma once

#include "controls/ChildControl.h"
#include "controls/Dialogs.h"

#include <functional>
#include <vector>

namespace corvane {

/// The buttons of a screen that begin jobs. None of them can be pressed while any job runs, whoever
/// began it.
class JobButtons {
  public:
    /// The pointer must outlive it, as must the buttons.
    explicit JobButtons(BusyPointer& pointer) : pointer_(pointer) {
        on_(pointer.JobChanged, [this] { hold(); });
    }

    /// From now on a press of the button runs this job, if it may begin.
    template<class Job>
    void add(
        Button& button, Job job, std::function<bool()> mayBegin = [] { return true; }) {
        buttons_.push_back(&button);
        on_(button.Click, [this, job = std::move(job), mayBegin = std::move(mayBegin)] {
            if (!mayBegin())
                return;
            const JobScope scope(pointer_);
            job();
        });
    }

  private:
    void hold() {
        for (Button* button : buttons_)
            button->setHeld(pointer_.JobRuns());
    }

    BusyPointer& pointer_;
    std::vector<Button*> buttons_;
    Connections on_;
};

} // namespace corvane
