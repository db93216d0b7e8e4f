#pragma once

#include "controls/ChildControl.h"
#include "controls/Dialogs.h"

namespace corvane {

/// Tells in a label, and with a sound, what has become of a job, until the next one begins.
class StatusLine {
  public:
    /// All of it must outlive it.
    StatusLine(Label& label, Dialogs& dialogs, BusyPointer& pointer)
        : label_(label), dialogs_(dialogs), onJob_(pointer.JobChanged.connect([this, &pointer] {
              if (pointer.JobRuns())
                  clear();
          })) {}

    void report(const std::string& text) { show(text, 0, false); }
    void error(const std::string& text) { show(text, Red, true); }
    void clear() { label_.setCaption(""); }

  private:
    static constexpr int Red = 255;

    void show(const std::string& text, int color, bool isError) {
        label_.setCaption(text);
        label_.setForeColor(color);
        dialogs_.Beep(isError);
    }

    Label& label_;
    Dialogs& dialogs_;
    Connection onJob_;
};

} // namespace corvane
