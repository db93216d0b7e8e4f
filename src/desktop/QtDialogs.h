#pragma once

#include "controls/Dialogs.h"

#include <QPointer>
#include <QString>
#include <QWidget>

namespace corvane {

/// The desktop's own dialogs, over the active window or else the one given here. File dialogs begin
/// in the folder used last. No dialog stands under the busy pointer. After a job the focus is where
/// it was before.
class QtDialogs final : public Dialogs, public BusyPointer {
  public:
    QtDialogs();

    void setParent(QWidget* parent) { parent_ = parent; }
    /// Where the next file dialog begins.
    void setFolder(const QString& folder) { folder_ = folder; }

    Answer Message(const MessageBox& box) override;
    std::optional<std::string> OpenFile(const std::string& filter,
                                        const std::string& title) override;
    std::optional<std::string> SaveFile(const std::string& filter,
                                        const std::string& initialName) override;
    std::optional<int> PickColor(int initial, const std::string& title) override;
    std::optional<std::string> Input(const std::string& prompt, const std::string& title,
                                     const std::string& initial) override;
    [[nodiscard]] std::optional<std::vector<bool>>
    PickFromList(const ListQuestion& question) override;
    void Beep(bool error) override;
    void set(bool busy) override;
    [[nodiscard]] bool isBusy() const { return busy_; }

  private:
    [[nodiscard]] QWidget* parent() const;
    std::optional<std::string> chosen(const QString& path);

    QWidget* parent_ = nullptr;
    QString folder_;
    bool busy_ = false;
    QPointer<QWidget> focused_; // when the job began
    Connections on_;
};

/// "Name (*.x)|*.x|Other|*.y" in the form that the toolkit takes.
[[nodiscard]] QString ToolkitFilter(const std::string& filter);

} // namespace corvane
