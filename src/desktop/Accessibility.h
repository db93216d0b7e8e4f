#pragma once

class QWidget;

namespace corvane {

/// Tells assistive programs that a widget is a picture that a person works on.
void TellAsCanvas(QWidget* widget);

} // namespace corvane
