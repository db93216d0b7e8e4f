#include "desktop/QtDialogs.h"

#include "desktop/EventLoop.h"
#include "desktop/ListDialog.h"
#include "desktop/Theme.h"

#include <QAbstractButton>
#include <QApplication>
#include <QColorDialog>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QStandardPaths>

namespace corvane {

namespace {

QMessageBox::Icon iconOf(MessageBox::Icon icon) {
    switch (icon) {
    case MessageBox::Icon::None:
        return QMessageBox::NoIcon;
    case MessageBox::Icon::Information:
        return QMessageBox::Information;
    case MessageBox::Icon::Question:
        return QMessageBox::Question;
    case MessageBox::Icon::Warning:
        return QMessageBox::Warning;
    case MessageBox::Icon::Critical:
        return QMessageBox::Critical;
    }
    return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons buttonsOf(MessageBox::Buttons buttons) {
    switch (buttons) {
    case MessageBox::Buttons::Ok:
        return QMessageBox::Ok;
    case MessageBox::Buttons::YesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case MessageBox::Buttons::YesNoCancel:
        return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    }
    return QMessageBox::Ok;
}

/// Takes the busy pointer away as long as a dialog shows.
class UsualPointer {
  public:
    explicit UsualPointer(QtDialogs& pointer) : pointer_(pointer), busy_(pointer.isBusy()) {
        pointer_.set(false);
    }
    ~UsualPointer() { pointer_.set(busy_); }
    UsualPointer(const UsualPointer&) = delete;
    UsualPointer& operator=(const UsualPointer&) = delete;

  private:
    QtDialogs& pointer_;
    bool busy_;
};

} // namespace

QtDialogs::QtDialogs() {
    on_(JobChanged, [this] {
        if (JobRuns())
            focused_ = QApplication::focusWidget();
    });
    on_(JobsOver, [this] {
        // First what was pressed meanwhile goes, or whoever gets the focus back would take it.
        ThrowInputAway();
        if (focused_ != nullptr && focused_->isEnabled() && focused_->isVisible())
            focused_->setFocus();
        focused_ = nullptr;
    });
}

QString ToolkitFilter(const std::string& filter) {
    const QStringList parts = QString::fromStdString(filter).split('|');
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        const QString name = parts[i].section(" (", 0, 0);
        const QString pattern = parts[i + 1] == "*.*" ? "*" : parts[i + 1];
        filters.push_back(name + " (" + QString(pattern).replace(';', ' ') + ")");
    }
    return filters.join(";;");
}

Answer QtDialogs::Message(const MessageBox& box) {
    const UsualPointer pointer(*this);
    // Plain, since names of files stand in it, which may look like marks of a format.
    QMessageBox message(iconOf(box.icon), QString::fromStdString(box.title),
                        QString::fromStdString(box.text).replace("\r\n", "\n"),
                        buttonsOf(box.buttons), parent());
    message.setTextFormat(Qt::PlainText);
    const auto rename = [&message](QMessageBox::StandardButton which, const std::string& caption) {
        if (QAbstractButton* button = message.button(which); button != nullptr && !caption.empty())
            button->setText(QString::fromStdString(caption));
    };
    rename(QMessageBox::Yes, box.yes);
    rename(QMessageBox::No, box.no);
    switch (message.exec()) {
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    case QMessageBox::Ok:
        return Answer::Ok;
    default:
        return DismissedAnswer(box.buttons);
    }
}

std::optional<std::string> QtDialogs::OpenFile(const std::string& filter,
                                               const std::string& title) {
    const UsualPointer pointer(*this);
    QFileDialog dialog(parent(), QString::fromStdString(title), folder_, ToolkitFilter(filter));
    dialog.setFileMode(QFileDialog::ExistingFile);
    return dialog.exec() == QDialog::Accepted ? chosen(dialog.selectedFiles().value(0))
                                              : std::nullopt;
}

std::optional<std::string> QtDialogs::SaveFile(const std::string& filter,
                                               const std::string& initialName) {
    const UsualPointer pointer(*this);
    QFileDialog dialog(parent(), "Save As", folder_, ToolkitFilter(filter));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setOption(QFileDialog::DontConfirmOverwrite); // the history asks, in its own words
    if (!initialName.empty())
        dialog.selectFile(QString::fromStdString(initialName));
    return dialog.exec() == QDialog::Accepted ? chosen(dialog.selectedFiles().value(0))
                                              : std::nullopt;
}

std::optional<int> QtDialogs::PickColor(int initial, const std::string& title) {
    const UsualPointer pointer(*this);
    const QColor color =
        QColorDialog::getColor(Theme::fromRgb(initial), parent(), QString::fromStdString(title));
    if (!color.isValid())
        return std::nullopt;
    return color.red() | (color.green() << 8) | (color.blue() << 16);
}

std::optional<std::string> QtDialogs::Input(const std::string& prompt, const std::string& title,
                                            const std::string& initial) {
    const UsualPointer pointer(*this);
    bool accepted = false;
    const QString text = QInputDialog::getText(parent(), QString::fromStdString(title),
                                               QString::fromStdString(prompt), QLineEdit::Normal,
                                               QString::fromStdString(initial), &accepted);
    return accepted ? std::optional(text.toStdString()) : std::nullopt;
}

std::optional<std::vector<bool>> QtDialogs::PickFromList(const ListQuestion& question) {
    const UsualPointer pointer(*this);
    ListDialog dialog(question, parent());
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return dialog.picked();
}

void QtDialogs::Beep(bool) {
    QApplication::beep(); // the desktop has one sound for all
}

void QtDialogs::set(bool busy) {
    if (busy == busy_)
        return;
    busy_ = busy;
    if (busy)
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    else
        QGuiApplication::restoreOverrideCursor();
}

QWidget* QtDialogs::parent() const {
    // A dialog over a dialog belongs to that, or it would come to lie behind it.
    QWidget* active = QApplication::activeWindow();
    return active == nullptr ? parent_ : active;
}

std::optional<std::string> QtDialogs::chosen(const QString& path) {
    if (path.isEmpty())
        return std::nullopt;
    folder_ = QFileInfo(path).absolutePath();
    return path.toStdString();
}

} // namespace corvane
