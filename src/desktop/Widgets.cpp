#include "desktop/Widgets.h"

#include "desktop/Binders.h"
#include "desktop/InputWidgets.h"
#include "desktop/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>

namespace corvane {

namespace {

class CutLabel final : public QWidget {
  public:
    CutLabel(Label& child, QWidget* parent) : QWidget(parent), child_(child) {
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        Follow(this, child, [this] {
            const QString text = QString::fromStdString(child_.Caption());
            setVisible(!text.isEmpty());
            setAccessibleName(text);
            setToolTip(text + "\n" + QString::fromStdString(child_.ToolTipText()));
            update();
        });
    }
    [[nodiscard]] QSize sizeHint() const override { return {0, fontMetrics().height()}; }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter(this).drawText(
            rect(), Qt::AlignRight | Qt::AlignVCenter,
            fontMetrics().elidedText(accessibleName(), Qt::ElideRight, width()));
    }

  private:
    Label& child_;
};

} // namespace

QWidget* MakeCutLabel(Label& child, QWidget* parent) {
    return new CutLabel(child, parent);
}

QLabel* MakeLabel(Label& child, QWidget* parent) {
    auto* label = new QLabel(parent);
    Bind(label, child);
    return label;
}

QPushButton* MakeButton(Button& child, QWidget* parent) {
    auto* button = new QPushButton(parent);
    Bind(button, child);
    return button;
}

QPushButton* MakeToolButton(Button& child, QWidget* parent) {
    QPushButton* button = MakeButton(child, parent);
    button->setFixedWidth(button->fontMetrics().horizontalAdvance(button->text()) +
                          3 * Theme::Spacing);
    return button;
}

Box* MakeNumberBox(TextBox& child, const QString& accessibleName, QWidget* parent) {
    auto* box = new Box(child, accessibleName, parent);
    box->setAlignment(Qt::AlignRight);
    box->setFixedWidth(box->fontMetrics().horizontalAdvance("00000") + 2 * Theme::Spacing);
    return box;
}

QHBoxLayout* MakeRow(std::initializer_list<QWidget*> widgets) {
    auto* row = new QHBoxLayout;
    row->setSpacing(Theme::Spacing / 2);
    for (QWidget* widget : widgets)
        row->addWidget(widget);
    return row;
}

} // namespace corvane
