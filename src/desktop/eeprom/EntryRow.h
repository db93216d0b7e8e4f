#pragma once

#include "eeprom/EEPROMEntry.h"

#include <QToolButton>

#include <array>

namespace corvane {

class Box;
class DropDown;

/// How the width of a row is shared out: address, length, comments, value, its type, remove.
[[nodiscard]] std::array<QRect, 6> EntryColumns(int width, int height);

/// The widgets of one row, which show one variable after another.
class EntryRow final : public QWidget {
  public:
    explicit EntryRow(QWidget* parent);

    /// Shows this variable, or none. It must outlive that or the next call.
    void bindTo(EEPROMEntry* entry);
    [[nodiscard]] EEPROMEntry* entry() const { return entry_; }
    /// Its widgets from left to right, as the Tab key reaches them.
    [[nodiscard]] const std::array<QWidget*, 6>& stops() const { return stops_; }
    /// Begins to edit it.
    void takeFocus();
    void takeValueFocus(); ///< The same, with its value.

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    EEPROMEntry* entry_ = nullptr;
    Box* address_;
    Box* length_;
    Box* comments_;
    Box* value_;
    DropDown* type_;
    QToolButton* remove_;
    std::array<QWidget*, 6> stops_;
};

} // namespace corvane
