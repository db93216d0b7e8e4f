#pragma once

#include "eeprom/EEPROMEditorControl.h"

#include <QWidget>

#include <unordered_map>

class QScrollBar;

namespace corvane {

class EntryRow;

/// The list of variables. Only the rows in view, and the one with the focus, have widgets.
class EntriesView final : public QWidget {
  public:
    /// For the Tab key the rows stand behind a widget, which outlives this.
    EntriesView(EEPROMEditorControl& control, QWidget* before, QWidget* parent);

    /// The row that shows a variable; nothing if it is not in view.
    [[nodiscard]] EntryRow* rowOf(const EEPROMEntry& entry) const;
    /// Rows that have widgets, in use or not.
    [[nodiscard]] int rowsMade() const { return rowsMade_; }

  protected:
    bool focusNextPrevChild(bool next) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    void showRows();
    [[nodiscard]] EEPROMEntry& entryAt(int row) const;
    void placeRow(int row, EEPROMEntry& entry);
    void rearranged();
    void release(EntryRow* row);
    [[nodiscard]] EntryRow* focusedRow() const;
    void orderTabs();

    EEPROMEditorControl& control_;
    QWidget* before_;
    QScrollBar* scroll_;
    std::unordered_map<const EEPROMEntry*, EntryRow*> shown_;
    std::vector<EntryRow*> spare_;
    int rowsMade_ = 0;
};

} // namespace corvane
