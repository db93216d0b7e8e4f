#include "desktop/ListDialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace corvane {

ListDialog::ListDialog(const ListQuestion& question, QWidget* parent)
    : QDialog(parent), list_(new QListWidget(this)) {
    setWindowTitle(QString::fromStdString(question.title));
    auto* text = new QLabel(QString::fromStdString(question.text).replace("\r\n", "\n"), this);
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    list_->setAccessibleName(text->text());
    for (const ListQuestion::Item& item : question.items) {
        auto* row = new QListWidgetItem(QString::fromStdString(item.text), list_);
        row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable); // what can't be picked is read too
        if (!item.pickable)
            continue;
        row->setFlags(row->flags() | Qt::ItemIsUserCheckable);
        row->setCheckState(item.picked ? Qt::Checked : Qt::Unchecked);
    }
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(QString::fromStdString(question.button), QDialogButtonBox::AcceptRole);
    if (std::any_of(question.items.begin(), question.items.end(),
                    [](const ListQuestion::Item& item) { return item.pickable; }))
        buttons->addButton("Not Now", QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(text);
    layout->addWidget(list_);
    layout->addWidget(buttons);
    constexpr int width = 480; // pixels
    constexpr int height = 320;
    resize(width, height);
    list_->setFocus();
}

std::vector<bool> ListDialog::picked() const {
    std::vector<bool> picked;
    for (int row = 0; row < list_->count(); ++row)
        picked.push_back(list_->item(row)->checkState() == Qt::Checked);
    return picked;
}

} // namespace corvane
