#pragma once

#include <QApplication>
#include <QTest>
#include <QTimer>

#include <functional>

namespace corvane {

/// As long as it lives, every dialog that stops everything is shown to `look` and then left with
/// Escape.
class Dismissing final : public QObject {
  public:
    explicit Dismissing(std::function<void(QWidget&)> look = {}) : look_(std::move(look)) {
        connect(&timer_, &QTimer::timeout, this, [this] {
            QWidget* dialog = QApplication::activeModalWidget();
            if (dialog == nullptr || !dialog->isVisible() || busy_)
                return;
            busy_ = true;
            ++count;
            dialog->activateWindow();
            if (look_)
                look_(*dialog);
            if (dialog == QApplication::activeModalWidget())
                QTest::keyClick(dialog, Qt::Key_Escape);
            busy_ = false;
        });
        timer_.start(1);
    }
    int count = 0;

  private:
    std::function<void(QWidget&)> look_;
    QTimer timer_;
    bool busy_ = false;
};

} // namespace corvane
