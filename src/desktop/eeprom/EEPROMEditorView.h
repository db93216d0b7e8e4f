#pragma once

#include "desktop/eeprom/EntriesView.h"

namespace corvane {

/// The EEPROM editor's screen.
class EEPROMEditorView final : public QWidget {
  public:
    EEPROMEditorView(EEPROMEditorControl& control, QWidget* parent);

    [[nodiscard]] EntriesView& entries() { return *entries_; }

  private:
    EntriesView* entries_;
};

} // namespace corvane
