#include "desktop/InputWidgets.h"

#include "desktop/Binders.h"

#include <QApplication>
#include <QCheckBox>
#include <QKeyEvent>
#include <QRadioButton>
#include <QScrollBar>
#include <QTabBar>

namespace corvane {

Box::Box(TextBox& child, const QString& accessibleName, QWidget* parent) : QLineEdit(parent) {
    setAccessibleName(accessibleName);
    BindWidget(this, child);
    bindTo(&child);
    connect(this, &QLineEdit::returnPressed, this, [this] { commit(); });
}

void Box::bindTo(TextBox* child) {
    delete held_;
    child_ = child;
    disconnect(this, &QLineEdit::textEdited, nullptr, nullptr);
    if (child == nullptr)
        return;
    showText();
    connect(this, &QLineEdit::textEdited, this, [this](const QString& text) {
        child_->type(text.toStdString());
        showText(); // what the core made of it
    });
    held_ = new HeldConnection(this, child->Changed.connect([this] { showText(); }));
}

void Box::commit() {
    if (child_ != nullptr)
        child_->leave();
}

void Box::showText() {
    const QString wanted = QString::fromStdString(child_->Text());
    if (text() != wanted)
        setText(wanted);
}

bool Box::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        auto& key = dynamic_cast<QKeyEvent&>(*event);
        const bool undo = key.matches(QKeySequence::Undo) && !isUndoAvailable();
        if (undo || key.matches(QKeySequence::Redo) ||
            (key.key() == Qt::Key_Y && key.modifiers() == Qt::ControlModifier)) {
            event->ignore();
            return false;
        }
    }
    return QLineEdit::event(event);
}

void Box::focusOutEvent(QFocusEvent* event) {
    QLineEdit::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        commit();
}

UpsideDownSlider::UpsideDownSlider(Slider& child, QWidget* parent) : QSlider(Qt::Vertical, parent) {
    setRange(child.Min(), child.Max());
    BindWidget(this, child);
    Follow(this, child, [this, &child] { setValue(maximum() - child.Value() + minimum()); });
    connect(this, &QSlider::valueChanged, this, [this, &child](int value) {
        const int theirs = maximum() - value + minimum();
        if (theirs == child.Value())
            return; // the core's own doing
        child.move(theirs);
        if (!isSliderDown())
            child.leave();
    });
    connect(this, &QSlider::sliderReleased, this, [&child] { child.leave(); });
}

void UpsideDownSlider::wheelEvent(QWheelEvent* event) {
    if (hasFocus())
        QSlider::wheelEvent(event);
    else
        event->ignore();
}

void CommitFocusedBox() {
    if (auto* box = dynamic_cast<Box*>(QApplication::focusWidget()))
        box->commit();
}

void Bind(QRadioButton* button, OptionButton& child) {
    BindWidget(button, child);
    Follow(button, child, [button, &child] {
        button->setText(QString::fromStdString(child.Caption()));
        button->setChecked(child.Value());
    });
    QObject::connect(button, &QRadioButton::clicked, button, [&child] { child.choose(); });
}

void Bind(QCheckBox* box, CheckBox& child) {
    BindWidget(box, child);
    Follow(box, child, [box, &child] {
        box->setText(QString::fromStdString(child.Caption()));
        box->setChecked(child.Value());
    });
    QObject::connect(box, &QCheckBox::clicked, box, [&child] { child.toggle(); });
}

void Bind(QTabBar* bar, TabStrip& child) {
    for (const TabStrip::Tab& tab : child.Tabs())
        bar->addTab(QString::fromStdString(tab.Caption));
    Follow(bar, child, [bar, &child] { bar->setCurrentIndex(child.SelectedIndex() - 1); });
    QObject::connect(bar, &QTabBar::currentChanged, bar,
                     [&child](int index) { child.select(index + 1); });
}

void Bind(QScrollBar* bar, ScrollBar& child) {
    Follow(bar, child, [bar, &child] {
        bar->setRange(0, child.Max());
        bar->setSingleStep(child.SmallChange());
        bar->setPageStep(child.LargeChange());
        bar->setValue(child.Value());
    });
    QObject::connect(bar, &QScrollBar::valueChanged, bar,
                     [&child](int value) { child.setValue(value); });
}

} // namespace corvane
