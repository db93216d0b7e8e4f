#pragma once

#include <QApplication>
#include <QPaintEvent>
#include <QScopedValueRollback>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <gtest/gtest.h>

#include <functional>

namespace corvane {

/// What has been painted of a widget since the counter was made.
class PaintCounter final : public QObject {
  public:
    explicit PaintCounter(QWidget& widget) { widget.installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            ++paints_;
            painted_ += dynamic_cast<QPaintEvent&>(*event).region();
        }
        return false;
    }
    [[nodiscard]] int paints() const { return paints_; }
    [[nodiscard]] const QRegion& painted() const { return painted_; }

  private:
    int paints_ = 0;
    QRegion painted_;
};

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

/// What is acted on stays on the screen until its click is over, and is not what comes next.
inline const QWidget* dialogInHand = nullptr;

/// Acts on the next dialog of a kind that stops everything, once it shows; `before` arranges what
/// comes then.
template<class Dialog>
void whenShown(
    std::function<void(Dialog&)> act, std::function<void()> before = [] {}) {
    auto* timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer,
                     [timer, act = std::move(act), before = std::move(before),
                      test = testing::UnitTest::GetInstance()->current_test_info()] {
                         if (testing::UnitTest::GetInstance()->current_test_info() != test)
                             return timer->deleteLater(); // it never came
                         auto* dialog = dynamic_cast<Dialog*>(QApplication::activeModalWidget());
                         if (dialog == nullptr || !dialog->isVisible() || dialog == dialogInHand)
                             return;
                         timer->stop();
                         timer->deleteLater();
                         before();
                         const QScopedValueRollback<const QWidget*> inHand(dialogInHand, dialog);
                         act(*dialog);
                     });
    timer->start(5);
}

} // namespace corvane
