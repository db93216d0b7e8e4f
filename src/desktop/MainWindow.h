#pragma once

#include "shell/LinkStatus.h"
#include "shell/MainForm.h"

#include <QMainWindow>
#include <QPointer>

class QLabel;

namespace corvane {

class SoftwareUpdateBand;
class UpdateBandView;
class UpdateStatusForm;

/// The main window's looks: a menu bar with a sign of the link at its right end, and the view of
/// the product control on show. Form and status must outlive it.
class MainWindow final : public QMainWindow {
  public:
    MainWindow(MainForm& form, LinkStatus& status);
    ~MainWindow() override;

    /// Shows the band where the form wants it. It must outlive the window.
    void setBand(SoftwareUpdateBand& band);
    /// Lets the menu and the about box tell how it stands with updates. It must outlive the window.
    void setUpdateStatus(UpdateStatusForm& status);

    [[nodiscard]] QWidget* view() const { return view_; }

  protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void showControl();
    void dropView();
    void place();
    void keepRoom();
    [[nodiscard]] QSize mostRoom() const;
    void takeSize(TwipSize clientSize);
    void showStatus(const LinkStatus& status);
    void fitSign();
    void showAbout();
    void showLog();

    MainForm& form_;
    QWidget* area_; // what the menu bar leaves
    QLabel* sign_;
    std::pair<QString, QString> signTexts_; // where there is room, and where there is not
    bool keepingRoom_ = false;
    bool signLeads_ = false; // to what mends what it tells
    QPointer<QWidget> view_;
    QPointer<QWidget> about_;
    QPointer<UpdateBandView> band_;
    int grown_ = 0; // pixels, by which the window has grown for what it shows
    QPointer<QWidget> log_;
    Connections on_;
};

} // namespace corvane
