#include "desktop/eeprom/EntriesView.h"

#include "desktop/Binders.h"
#include "desktop/InputWidgets.h"
#include "desktop/Theme.h"
#include "desktop/Twips.h"
#include "desktop/eeprom/EntryRow.h"

#include <QApplication>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>

namespace corvane {

namespace {

constexpr int RowLeft = EEPROMEditorControl::RowLeft / TwipsPerPixel;
constexpr int RowHeight = EEPROMEditorControl::RowHeight / TwipsPerPixel;

} // namespace

EntriesView::EntriesView(EEPROMEditorControl& control, QWidget* before, QWidget* parent)
    : QWidget(parent),
      control_(control),
      before_(before),
      scroll_(new QScrollBar(Qt::Vertical, this)) {
    scroll_->setAccessibleName("Variables");
    Bind(scroll_, control.VScroll);
    BindWidget(scroll_, control.VScroll);
    On(this, control.VScroll.Moved, [this] { showRows(); });
    On(this, control.Rearranged, [this] { rearranged(); });
    On(this, control.EntryLeaving, [this](const EEPROMEntry& entry) {
        if (EntryRow* row = rowOf(entry))
            release(row);
        shown_.erase(&entry);
    });
    On(this, control.FocusWanted, [this](EEPROMEntry& entry) {
        control_.scrollTo(entry);
        if (EntryRow* row = rowOf(entry))
            row->takeFocus();
    });
    On(this, control.ValueFocusWanted, [this](EEPROMEntry& entry) {
        control_.scrollTo(entry);
        if (EntryRow* row = rowOf(entry))
            row->takeValueFocus();
    });
    setMinimumSize(460, 4 * RowHeight);
}

EntryRow* EntriesView::rowOf(const EEPROMEntry& entry) const {
    const auto found = shown_.find(&entry);
    return found == shown_.end() ? nullptr : found->second;
}

EntryRow* EntriesView::focusedRow() const {
    for (QWidget* widget = QApplication::focusWidget(); widget != nullptr;
         widget = widget->parentWidget())
        if (auto* row = dynamic_cast<EntryRow*>(widget))
            return row->parentWidget() == this ? row : nullptr;
    return nullptr;
}

void EntriesView::release(EntryRow* row) {
    row->bindTo(nullptr);
    row->hide();
    spare_.push_back(row);
}

void EntriesView::rearranged() {
    // A row that is being edited may have moved away.
    const EntryRow* focused = focusedRow();
    if (focused != nullptr && focused->entry() != nullptr)
        control_.scrollTo(*focused->entry());
    showRows();
    orderTabs();
    update();
}

void EntriesView::showRows() {
    const auto& rows = control_.rows();
    const int count = static_cast<int>(rows.size());
    const int step = EEPROMEditorControl::RowStep;
    const int first = std::min(count, control_.VScroll.Value() / step);
    const int end =
        std::min(count, (control_.VScroll.Value() + height() * TwipsPerPixel) / step + 1);
    // Asked for before any widget changes hands, since the asking makes them.
    std::vector<EEPROMEntry*> inView;
    for (int row = first; row < end; ++row)
        inView.push_back(&entryAt(row));
    // Those that go give their widgets to those that come. The focused one stays, in view or not,
    // since what is typed in it counts only when it is left.
    const EntryRow* focused = focusedRow();
    for (auto shown = shown_.begin(); shown != shown_.end();) {
        if (shown->second == focused ||
            std::find(inView.begin(), inView.end(), shown->first) != inView.end()) {
            ++shown;
        } else {
            release(shown->second);
            shown = shown_.erase(shown);
        }
    }
    for (int row = first; row < end; ++row)
        placeRow(row, *inView[static_cast<std::size_t>(row - first)]);
    if (focused != nullptr && focused->entry() != nullptr)
        if (const int row = control_.rowOf(*focused->entry()); row >= 0)
            placeRow(row, *focused->entry());
    update(0, 0, RowLeft, height());
}

EEPROMEntry& EntriesView::entryAt(int row) const {
    return control_.Entry(control_.rows()[static_cast<std::size_t>(row)]);
}

void EntriesView::placeRow(int row, EEPROMEntry& entry) {
    EntryRow*& widget = shown_[&entry];
    if (widget == nullptr) {
        if (spare_.empty()) {
            spare_.push_back(new EntryRow(this));
            ++rowsMade_;
        }
        widget = spare_.back();
        spare_.pop_back();
        widget->bindTo(&entry);
    }
    widget->setGeometry(RowLeft, control_.rowTop(row) / TwipsPerPixel,
                        control_.rowWidth() / TwipsPerPixel, RowHeight);
    widget->show();
}

void EntriesView::orderTabs() {
    QWidget* last = before_;
    for (const int index : control_.rows()) {
        const EEPROMEntry* entry = control_.EntryIfMade(index);
        const EntryRow* row = entry == nullptr ? nullptr : rowOf(*entry);
        if (row == nullptr) {
            if (last != before_)
                break; // below the view
            continue;
        }
        for (QWidget* stop : row->stops()) {
            setTabOrder(last, stop);
            last = stop;
        }
    }
}

bool EntriesView::focusNextPrevChild(bool next) {
    EntryRow* row = focusedRow();
    if (row == nullptr || row->entry() == nullptr)
        return QWidget::focusNextPrevChild(next);
    const auto& stops = row->stops();
    const auto at = std::find(stops.begin(), stops.end(), QApplication::focusWidget());
    if (at == stops.end())
        return QWidget::focusNextPrevChild(next);
    const bool leavesRow = next ? at + 1 == stops.end() : at == stops.begin();
    if (!leavesRow) {
        (next ? *(at + 1) : *(at - 1))
            ->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        return true;
    }
    // The next row may be out of view, and then has no widgets that the Tab key would find.
    const int place = control_.rowOf(*row->entry()) + (next ? 1 : -1);
    if (place < 0 || place >= static_cast<int>(control_.rows().size()))
        return QWidget::focusNextPrevChild(next);
    const EEPROMEntry& neighbour = entryAt(place);
    control_.scrollTo(neighbour);
    if (const EntryRow* other = rowOf(neighbour))
        (next ? other->stops().front() : other->stops().back())
            ->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

void EntriesView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (control_.EntryCount() == 0) {
        painter.setPen(Theme::hintColor(palette(), QPalette::Window));
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap,
                         "No variables yet.\nPress New Variable to add one.");
        return;
    }
    // What the colour of its boxes says about a row is said by a sign as well.
    QFont bold = font();
    bold.setBold(true);
    painter.setFont(bold);
    for (const auto& [entry, row] : shown_)
        if (entry->AddressConflicts() || entry->isBeyondEnd() || !entry->ctlContents.TextIsValid())
            painter.drawText(QRect(0, row->y(), RowLeft, RowHeight), Qt::AlignCenter, "!");
}

void EntriesView::resizeEvent(QResizeEvent*) {
    const int barWidth = scroll_->sizeHint().width();
    scroll_->setGeometry(width() - barWidth, 0, barWidth, height());
    control_.ResizeEntries({width() * TwipsPerPixel, height() * TwipsPerPixel},
                           barWidth * TwipsPerPixel);
}

void EntriesView::wheelEvent(QWheelEvent* event) {
    QApplication::sendEvent(scroll_, event);
}

} // namespace corvane
