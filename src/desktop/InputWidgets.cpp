#include "desktop/InputWidgets.h"

#include "desktop/Binders.h"
#include "desktop/Theme.h"

#include <QApplication>
#include <QCheckBox>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QRadioButton>
#include <QScrollBar>
#include <QTabBar>

namespace corvane {

namespace {
constexpr int LongestText = 1 << 24; // far beyond what a person types, so that nothing is cut off

/// Whether the focus goes for good, and not only to a menu or another window.
bool isLeaving(const QFocusEvent& event) {
    return event.reason() != Qt::PopupFocusReason && event.reason() != Qt::ActiveWindowFocusReason;
}
} // namespace

Box::Box(QWidget* parent) : QLineEdit(parent) {
    setMaxLength(LongestText);
}

Box::Box(TextBox& child, const QString& accessibleName, QWidget* parent) : Box(parent) {
    setAccessibleName(accessibleName);
    BindWidget(this, child);
    bindTo(&child);
    connect(this, &QLineEdit::returnPressed, this, [this] { commit(); });
}

void Box::bindTo(TextBox* child) {
    delete held_;
    child_ = child;
    // What shows next is not typed, and belongs to another child.
    disconnect(this, &QLineEdit::textEdited, nullptr, nullptr);
    if (child == nullptr)
        return;
    const auto show = [this] {
        showText();
        showTint();
        setToolTip(QString::fromStdString(child_->ToolTipText()));
    };
    show();
    connect(this, &QLineEdit::textEdited, this, [this](const QString& text) {
        const std::string typed = text.toStdString();
        child_->type(typed_ ? typed_(typed) : typed);
        showText(); // what the core made of it
    });
    held_ = new HeldConnection(this, child->Changed.connect(show));
}

void Box::setTranslation(Translation shown, Translation typed) {
    shown_ = std::move(shown);
    typed_ = std::move(typed);
}

void Box::commit() {
    if (child_ != nullptr)
        child_->leave();
}

void Box::showText() {
    const QString wanted = QString::fromStdString(shown_ ? shown_(child_->Text()) : child_->Text());
    if (text() == wanted)
        return;
    setText(wanted);
    if (!hasFocus())
        setCursorPosition(0); // long text shows its beginning
}

void Box::showTint() {
    QPalette own; // with nothing set, so that all else follows the desktop's colours
    if (child_->Tint()) {
        const QColor ground = QApplication::palette(this).color(QPalette::Base);
        own.setColor(QPalette::Base, Theme::tinted(ground, *child_->Tint()));
    }
    setPalette(own);
}

bool Box::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        // The box undoes what has been typed in it; where nothing has, the key is the document's.
        auto& key = dynamic_cast<QKeyEvent&>(*event);
        const bool undo = key.matches(QKeySequence::Undo) && !isUndoAvailable();
        if (undo || key.matches(QKeySequence::Redo) ||
            (key.key() == Qt::Key_Y && key.modifiers() == Qt::ControlModifier)) {
            event->ignore();
            return false;
        }
    }
    if (event->type() == QEvent::DragEnter &&
        dynamic_cast<QDragEnterEvent&>(*event).mimeData()->hasUrls()) {
        event->ignore(); // a file is for the window, and not for the text
        return false;
    }
    const bool taken = QLineEdit::event(event);
    if (event->type() == QEvent::PaletteChange && held_ != nullptr)
        showTint();
    return taken;
}

void Box::focusOutEvent(QFocusEvent* event) {
    QLineEdit::focusOutEvent(event);
    if (isLeaving(*event))
        commit();
}

UpsideDownSlider::UpsideDownSlider(Slider& child, QWidget* parent)
    : QSlider(Qt::Vertical, parent),
      child_(child),
      drag_(this, {.move = {},
                   .drop = [this] { commit(); },
                   .giveUp =
                       [this] {
                           setRepeatAction(SliderNoAction);
                           setValue(pressedAt_);
                       }}) {
    setRange(child.Min(), child.Max());
    BindWidget(this, child);
    Follow(this, child, [this] { setValue(maximum() - child_.Value() + minimum()); });
    connect(this, &QSlider::valueChanged, this, [this](int value) {
        const int theirs = maximum() - value + minimum();
        if (theirs == child_.Value())
            return; // the core's own doing
        pending_ = true;
        child_.move(theirs);
    });
}

void UpsideDownSlider::commit() {
    if (std::exchange(pending_, false))
        child_.leave();
}

void UpsideDownSlider::focusOutEvent(QFocusEvent* event) {
    QSlider::focusOutEvent(event);
    if (isLeaving(*event))
        commit();
}

void UpsideDownSlider::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        commit();
    else
        QSlider::keyPressEvent(event);
}

void UpsideDownSlider::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        commit(); // the keys before are an act of their own
        pressedAt_ = value();
        drag_.begin();
    }
    QSlider::mousePressEvent(event);
}

void UpsideDownSlider::paintEvent(QPaintEvent* event) {
    QSlider::paintEvent(event);
    if (!hasFocus())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.drawRoundedRect(rect().adjusted(1, 1, -1, -1), 4, 4);
}

void UpsideDownSlider::wheelEvent(QWheelEvent* event) {
    if (hasFocus())
        QSlider::wheelEvent(event);
    else
        event->ignore();
}

DropDown::DropDown(const QString& accessibleName, QWidget* parent) : QComboBox(parent) {
    setAccessibleName(accessibleName);
    connect(this, &QComboBox::textActivated, this, [this](const QString& text) {
        pending_ = true;
        child_->choose(text.toStdString());
    });
}

void DropDown::bindTo(DropDownList* child) {
    delete held_;
    child_ = child;
    pending_ = false;
    clear();
    if (child == nullptr)
        return;
    for (const std::string& item : child->Items())
        addItem(QString::fromStdString(item));
    setToolTip(QString::fromStdString(child->ToolTipText()));
    showText();
    held_ = new HeldConnection(this, child->Changed.connect([this] { showText(); }));
}

void DropDown::commit() {
    if (std::exchange(pending_, false))
        child_->leave();
}

void DropDown::showText() {
    setCurrentIndex(findText(QString::fromStdString(child_->Text())));
}

void DropDown::focusOutEvent(QFocusEvent* event) {
    QComboBox::focusOutEvent(event);
    if (isLeaving(*event))
        commit(); // and nothing counts where the focus only went by
}

void DropDown::wheelEvent(QWheelEvent* event) {
    if (hasFocus())
        QComboBox::wheelEvent(event);
    else
        event->ignore();
}

void CommitFocusedBox() {
    // Of windows in the background too: what leaves a box may come from another program.
    for (QWidget* window : QApplication::topLevelWidgets())
        if (auto* left = dynamic_cast<Leavable*>(window->focusWidget()))
            left->commit();
}

void Bind(QRadioButton* button, OptionButton& child) {
    BindWidget(button, child);
    Follow(button, child, [button, &child] {
        button->setText(QString::fromStdString(child.Caption()));
        button->setChecked(child.Value());
    });
    QObject::connect(button, &QRadioButton::clicked, button, [&child] {
        CommitFocusedBox();
        child.choose();
    });
}

void Bind(QCheckBox* box, CheckBox& child) {
    BindWidget(box, child);
    Follow(box, child, [box, &child] {
        box->setText(QString::fromStdString(child.Caption()));
        box->setChecked(child.Value());
    });
    QObject::connect(box, &QCheckBox::clicked, box, [&child] {
        CommitFocusedBox();
        child.toggle();
    });
}

void Bind(QTabBar* bar, TabStrip& child) {
    for (const TabStrip::Tab& tab : child.Tabs())
        bar->addTab(QString::fromStdString(tab.Caption));
    Follow(bar, child, [bar, &child] { bar->setCurrentIndex(child.SelectedIndex() - 1); });
    QObject::connect(bar, &QTabBar::currentChanged, bar, [&child](int index) {
        if (index + 1 == child.SelectedIndex())
            return; // the control has gone there, and its boxes mean something else already
        // Before what the box belongs to goes from the screen.
        CommitFocusedBox();
        child.select(index + 1);
    });
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
