#include "desktop/DebugWindow.h"

#include "desktop/Binders.h"
#include "desktop/InputWidgets.h"
#include "desktop/Theme.h"
#include "desktop/Widgets.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QScrollBar>

#include <algorithm>

namespace corvane {

namespace {
constexpr int Margin = 4;       // pixels
constexpr int CatchUpTime = 40; // ms: however many lines come, they are shown together
} // namespace

LogView::LogView(LogBox& log, QWidget* parent) : QAbstractScrollArea(parent), log_(log) {
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setAccessibleName("Log");
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setBackgroundRole(QPalette::Base);
    On(this, log.LinesChanged, [this] { linesChanged(); });
    catchUp();
}

void LogView::linesChanged() {
    if (timer_ == 0)
        timer_ = startTimer(CatchUpTime);
}

void LogView::timerEvent(QTimerEvent* event) {
    if (event->timerId() != timer_)
        return QAbstractScrollArea::timerEvent(event);
    killTimer(timer_);
    timer_ = 0;
    catchUp();
}

void LogView::catchUp() {
    const auto& lines = log_.Lines();
    if (lines.size() < measured_) {
        measured_ = 0;
        widest_ = 0;
        first_ = last_ = -1;
    }
    // All characters are as wide as any other.
    std::size_t longest = 0;
    for (; measured_ < lines.size(); ++measured_)
        longest = std::max(longest, lines[measured_].size());
    widest_ = std::max(widest_, static_cast<int>(longest) * fontMetrics().horizontalAdvance('0'));

    QScrollBar* bar = verticalScrollBar();
    const bool atEnd = bar->value() == bar->maximum();
    const int fitting = viewport()->height() / lineHeight();
    bar->setPageStep(std::max(1, fitting));
    bar->setRange(0, std::max(0, static_cast<int>(lines.size()) - fitting));
    if (atEnd)
        bar->setValue(bar->maximum());
    horizontalScrollBar()->setPageStep(viewport()->width());
    horizontalScrollBar()->setRange(0, std::max(0, widest_ + 2 * Margin - viewport()->width()));
    viewport()->update();
}

void LogView::paintEvent(QPaintEvent*) {
    QPainter painter(viewport());
    const auto& lines = log_.Lines();
    const int count = static_cast<int>(lines.size());
    const int first = verticalScrollBar()->value();
    const int left = Margin - horizontalScrollBar()->value();
    for (int line = first, y = 0; line < count && y < viewport()->height();
         ++line, y += lineHeight()) {
        const bool chosen = line >= std::min(first_, last_) && line <= std::max(first_, last_);
        if (chosen)
            painter.fillRect(0, y, viewport()->width(), lineHeight(),
                             palette().color(QPalette::Highlight));
        painter.setPen(palette().color(chosen ? QPalette::HighlightedText : QPalette::Text));
        painter.drawText(left, y + fontMetrics().ascent(),
                         QString::fromStdString(lines[static_cast<std::size_t>(line)]));
    }
}

void LogView::resizeEvent(QResizeEvent*) {
    catchUp();
}

int LogView::lineAt(int y) const {
    const int line = verticalScrollBar()->value() + y / lineHeight();
    return std::clamp(line, 0, static_cast<int>(log_.Lines().size()) - 1);
}

void LogView::mousePressEvent(QMouseEvent* event) {
    last_ = lineAt(event->pos().y());
    if (!event->modifiers().testFlag(Qt::ShiftModifier) || first_ < 0)
        first_ = last_;
    viewport()->update();
}

void LogView::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons().testFlag(Qt::LeftButton)) {
        last_ = lineAt(event->pos().y());
        viewport()->update();
    }
}

void LogView::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::SelectAll)) {
        first_ = 0;
        last_ = static_cast<int>(log_.Lines().size()) - 1;
        viewport()->update();
    } else if (event->matches(QKeySequence::Copy)) {
        QApplication::clipboard()->setText(selectedText());
    } else if (event->key() == Qt::Key_End || event->key() == Qt::Key_Home) {
        verticalScrollBar()->setValue(
            event->key() == Qt::Key_Home ? 0 : verticalScrollBar()->maximum());
    } else {
        QAbstractScrollArea::keyPressEvent(event);
    }
}

QString LogView::selectedText() const {
    std::string text;
    const auto& lines = log_.Lines();
    const int end = std::min(std::max(first_, last_) + 1, static_cast<int>(lines.size()));
    for (int line = std::max(0, std::min(first_, last_)); line < end; ++line)
        text += lines[static_cast<std::size_t>(line)] + "\n";
    return QString::fromStdString(text);
}

DebugWindow::DebugWindow(DebugForm& form, QWidget* parent)
    : QWidget(parent, Qt::Window), form_(form) {
    setWindowTitle(DebugForm::Title);
    setAttribute(Qt::WA_DeleteOnClose);
    // It must not take the keyboard from whoever is at work.
    setAttribute(Qt::WA_ShowWithoutActivating);
    auto* details = new QCheckBox(this);
    Bind(details, form.chkShowDetails);
    auto* buttons = MakeRow({details});
    buttons->addStretch();
    buttons->addWidget(MakeButton(form.ClearButton, this));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Theme::Spacing, Theme::Spacing, Theme::Spacing, Theme::Spacing);
    layout->setSpacing(Theme::Spacing);
    layout->addWidget(new LogView(form.DebugText, this), 1);
    layout->addLayout(buttons);
    On(this, form.Closed, [this] { close(); });
    resize(640, 400);
}

void DebugWindow::closeEvent(QCloseEvent* event) {
    QWidget::closeEvent(event);
    form_.close();
}

} // namespace corvane
