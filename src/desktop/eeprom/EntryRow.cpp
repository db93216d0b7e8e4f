#include "desktop/eeprom/EntryRow.h"

#include "desktop/InputWidgets.h"

namespace corvane {

namespace {

constexpr int Gap = 4; // pixels
constexpr int NumberWidth = 56;
constexpr int TypeWidth = 108;
constexpr int RemoveWidth = 22;

Box* makeBox(const char* name, QWidget* parent) {
    auto* box = new Box(parent);
    box->setAccessibleName(name);
    QObject::connect(box, &QLineEdit::returnPressed, box, [box] { box->commit(); });
    return box;
}

} // namespace

std::array<QRect, 6> EntryColumns(int width, int height) {
    const int texts = std::max(0, width - 2 * NumberWidth - TypeWidth - RemoveWidth - 5 * Gap);
    const int comments = texts * 2 / 5;
    std::array<QRect, 6> columns;
    int left = 0;
    std::size_t column = 0;
    for (const int columnWidth :
         {NumberWidth, NumberWidth, comments, texts - comments, TypeWidth, RemoveWidth}) {
        columns[column++] = QRect(left, 0, columnWidth, height);
        left += columnWidth + Gap;
    }
    return columns;
}

EntryRow::EntryRow(QWidget* parent)
    : QWidget(parent),
      address_(makeBox("Address", this)),
      length_(makeBox("Length in bytes", this)),
      comments_(makeBox("Comments", this)),
      value_(makeBox("Value", this)),
      type_(new DropDown("Type of the value", this)),
      remove_(new QToolButton(this)),
      stops_{address_, length_, comments_, value_, type_, remove_} {
    address_->setAlignment(Qt::AlignRight);
    length_->setAlignment(Qt::AlignRight);
    value_->setTranslation(WithVisibleControls, WithControls);
    remove_->setText("×");
    remove_->setAccessibleName("Remove this variable");
    remove_->setFocusPolicy(Qt::StrongFocus);
    connect(remove_, &QToolButton::clicked, this, [this] { entry_->RemoveButton.press(); });
}

void EntryRow::bindTo(EEPROMEntry* entry) {
    entry_ = entry;
    address_->bindTo(entry == nullptr ? nullptr : &entry->txtAddress);
    length_->bindTo(entry == nullptr ? nullptr : &entry->txtLength);
    comments_->bindTo(entry == nullptr ? nullptr : &entry->txtComments);
    value_->bindTo(entry == nullptr ? nullptr : &entry->ctlContents.txtData);
    type_->bindTo(entry == nullptr ? nullptr : &entry->ctlContents.cmbDataType);
    if (entry != nullptr)
        remove_->setToolTip(QString::fromStdString(entry->RemoveButton.ToolTipText()));
}

void EntryRow::takeFocus() {
    address_->setFocus(Qt::OtherFocusReason);
    address_->selectAll();
}

void EntryRow::takeValueFocus() {
    value_->setFocus(Qt::OtherFocusReason);
    value_->selectAll();
}

void EntryRow::resizeEvent(QResizeEvent*) {
    const std::array<QRect, 6> columns = EntryColumns(width(), height());
    for (std::size_t i = 0; i < stops_.size(); ++i)
        stops_[i]->setGeometry(columns[i]);
}

} // namespace corvane
