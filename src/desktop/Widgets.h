#pragma once

#include "controls/ChildControl.h"

#include <initializer_list>

class QHBoxLayout;
class QLabel;
class QPushButton;
class QString;
class QWidget;

namespace corvane {

class Box;
class TextBox;

// Widgets that are bound already, as the views need them again and again.

[[nodiscard]] QLabel* MakeLabel(Label& child, QWidget* parent);
/// At the right end of a row, and no wider than what that leaves: text that is longer shows its
/// beginning, and all of it in its tip.
[[nodiscard]] QWidget* MakeCutLabel(Label& child, QWidget* parent);
[[nodiscard]] QPushButton* MakeButton(Button& child, QWidget* parent);
/// No wider than its caption needs, where many stand in a row.
[[nodiscard]] QPushButton* MakeToolButton(Button& child, QWidget* parent);
/// For numbers of up to five digits.
[[nodiscard]] Box* MakeNumberBox(TextBox& child, const QString& accessibleName, QWidget* parent);
[[nodiscard]] QHBoxLayout* MakeRow(std::initializer_list<QWidget*> widgets);

} // namespace corvane
