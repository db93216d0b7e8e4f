#pragma once

#include <QApplication>
#include <QPaintEvent>
#include <QScopedValueRollback>
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
