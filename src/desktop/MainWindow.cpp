#include "desktop/MainWindow.h"

#include "desktop/AboutWindow.h"
#include "desktop/Binders.h"
#include "desktop/DebugWindow.h"
#include "desktop/InputWidgets.h"
#include "desktop/Theme.h"
#include "desktop/Twips.h"
#include "desktop/UpdateBandView.h"
#include "desktop/UpdateStatusWindow.h"
#include "desktop/Views.h"

#include <QCloseEvent>
#include <QLabel>
#include <QLayout>
#include <QMenuBar>
#include <QMimeData>
#include <QScopedValueRollback>
#include <QScreen>

namespace corvane {

namespace {

TwipSize toTwips(QSize size) {
    return {size.width() * TwipsPerPixel, size.height() * TwipsPerPixel};
}

QSize toPixels(TwipSize size) {
    return {size.width / TwipsPerPixel, size.height / TwipsPerPixel};
}

} // namespace

MainWindow::MainWindow(MainForm& form, LinkStatus& status)
    : form_(form), area_(new QWidget(this)), sign_(new QLabel(this)) {
    setWindowIcon(Theme::programIcon());
    setWindowTitle(QString::fromStdString(form.Title()));
    setAcceptDrops(true);
    setCentralWidget(area_);
    area_->installEventFilter(this);
    Bind(menuBar(), form.menu.layout());
    constexpr int drop = 3; // pixels, that bring it in line with the menus
    sign_->setContentsMargins(Theme::Spacing, drop, Theme::Spacing, 0);
    menuBar()->setCornerWidget(sign_);
    connect(sign_, &QLabel::linkActivated, this,
            [&form] { form.menu.mnuHelpTroubleshootingReinstallCorvaneDrivers.choose(); });
    Bind(this, form.tmrUpdate);
    Bind(this, form.tmrTell);
    Bind(this, form.tmrJournals);

    on_(form.TitleChanged, [this] {
        // In a title "[*]" stands for a mark of its own, and "[*][*]" for the characters.
        setWindowTitle(QString::fromStdString(form_.Title()).replace("[*]", "[*][*]"));
    });
    on_(form.ControlLeaving, [this] { dropView(); });
    on_(form.ControlChanged, [this] { showControl(); });
    on_(form.LayoutChanged, [this] { place(); });
    on_(form.ClientSizeWanted, [this](TwipSize size) { takeSize(size); });
    on_(form.Ending, [this] { hide(); });
    on_(form.Closed, [this] { close(); });
    on_(form.about.Shown, [this] { showAbout(); });
    on_(form.debugForm.Shown, [this] { showLog(); });
    if (form.debugForm.open())
        showLog();
    on_(status.Changed, [this, &status] { showStatus(status); });
    showStatus(status);
    takeSize({11010, 7770});
    if (form.control() != nullptr)
        showControl();
}

MainWindow::~MainWindow() {
    dropView();
    delete log_;
}

void MainWindow::closeEvent(QCloseEvent* event) {
    CommitFocusedBox();
    event->setAccepted(form_.Unload());
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    if (form_.HistoryObject() != nullptr && urls.size() == 1 && urls.front().isLocalFile())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    event->acceptProposedAction();
    const std::string file = event->mimeData()->urls().value(0).toLocalFile().toStdString();
    // Once the drag is over: opening may ask.
    QMetaObject::invokeMethod(
        this,
        [this, file] {
            CommitFocusedBox();
            form_.OpenFile(file);
        },
        Qt::QueuedConnection);
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        fitSign();
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == area_ && event->type() == QEvent::Resize) {
        if (band_ != nullptr)
            band_->fitTo(area_->width());
        form_.Resize(toTwips(area_->size()), !isMaximized() && !isFullScreen());
        fitSign();
    } else if (watched == view_ && event->type() == QEvent::LayoutRequest) {
        keepRoom();
    }
    return QMainWindow::eventFilter(watched, event);
}

void MainWindow::showControl() {
    view_ = MakeView(*form_.control(), area_);
    view_->installEventFilter(this);
    // In its place before it shows, or it would be seen to jump.
    place();
    view_->show();
    if (QWidget* first = view_->focusWidget())
        first->setFocus(); // where the view would like to begin
}

void MainWindow::dropView() {
    if (view_ == nullptr)
        return;
    // The view may be in the middle of an event of its own, so it only lets go of its control now.
    QWidget* leaving = view_;
    view_ = nullptr;
    leaving->hide();
    LetGo(leaving);
    leaving->disconnect();
    leaving->deleteLater();
}

void MainWindow::setBand(SoftwareUpdateBand& band) {
    band_ = new UpdateBandView(band, area_);
    band_->fitTo(area_->width());
    place();
}

void MainWindow::setUpdateStatus(UpdateStatusForm& status) {
    form_.menu.mnuHelpCheckForUpdatesNow.setEnabled(status.HasUpdates());
    on_(form_.menu.mnuHelpCheckForUpdatesNow.Click, [&status] { status.show(); });
    on_(form_.about.Shown, [this, &status] { form_.about.setNews(status.News()); });
    on_(form_.Closed, [&status] { status.close(); });
    on_(status.Shown, [this, &status] {
        auto* window = new UpdateStatusWindow(status, this);
        window->setAttribute(Qt::WA_DeleteOnClose);
        window->show();
    });
}

void MainWindow::place() {
    if (band_ != nullptr) {
        const BandPlace& place = form_.bandPlace();
        const QSize size = toPixels({place.width, place.height});
        band_->setGeometry(QRect(QPoint(0, place.top / TwipsPerPixel), size));
        band_->setVisible(place.visible);
        band_->raise();
    }
    keepRoom();
    if (view_ != nullptr && form_.control() != nullptr)
        view_->setGeometry(QRect(QPoint(0, 0), toPixels(form_.control()->size())));
}

/// Never smaller than what is shown needs: grows for it, and gives back what it has grown.
void MainWindow::keepRoom() {
    if (view_ == nullptr || keepingRoom_)
        return;
    const QScopedValueRollback keeping(keepingRoom_, true);
    const int band = form_.bandPlace().visible ? form_.bandPlace().height / TwipsPerPixel : 0;
    const QSize needed =
        (view_->minimumSizeHint().expandedTo(QSize(0, 0)) + QSize(0, band)).boundedTo(mostRoom());
    const int had = area_->height(); // a new least size makes it grow at once, without the window
    const int before = height();
    area_->setMinimumSize(needed);
    if (!isVisible() || isMaximized() || isFullScreen())
        return;
    const int lacking = needed.height() - had;
    const int more = lacking > 0 ? lacking : -std::min(grown_, -lacking);
    if (more == 0)
        return;
    grown_ += more;
    layout()->activate(); // or else the size that was needed until now would hold the window up
    resize(width(), before + more);
}

/// The largest area that leaves the window whole on its screen.
QSize MainWindow::mostRoom() const {
    constexpr QSize leastFrame(8, 40); // before the window manager has told what it puts round it
    const QSize frame = (frameGeometry().size() - size()).expandedTo(leastFrame);
    const QSize bar(0, menuBar()->sizeHint().height());
    return screen()->availableGeometry().size() - frame - bar;
}

void MainWindow::takeSize(TwipSize clientSize) {
    if (isMaximized() || isFullScreen())
        showNormal();
    const QSize around = size() - area_->size();
    const bool known = isVisible() && around.width() >= 0 && around.height() >= 0;
    grown_ = 0;
    resize(toPixels(clientSize).boundedTo(mostRoom()) +
           (known ? around : QSize(0, menuBar()->sizeHint().height())));
    const QRect available = screen()->availableGeometry();
    QRect frame = frameGeometry();
    frame.moveCenter(available.center());
    move(std::max(available.left(), frame.left()), std::max(available.top(), frame.top()));
}

void MainWindow::showStatus(const LinkStatus& status) {
    const QString mark = status.state() == LinkStatus::State::NoDevice       ? "○"
                         : status.state() == LinkStatus::State::NoPermission ? "⚠"
                         : status.state() == LinkStatus::State::Waiting      ? "◐"
                         : status.state() == LinkStatus::State::Busy         ? "◉"
                                                                             : "●";
    const QString headline = QString::fromStdString(status.headline());
    const QString detail = QString::fromStdString(status.detail());
    signTexts_ = {mark + " " + headline, mark};
    signLeads_ = status.state() == LinkStatus::State::NoPermission;
    sign_->setToolTip(headline + ". " + detail);
    sign_->setAccessibleName("Link: " + headline + ". " + detail);
    fitSign();
    sign_->show();
}

void MainWindow::fitSign() {
    constexpr int roundEachMenu = 3 * Theme::Spacing; // pixels
    int menus = 2 * Theme::Spacing;
    for (const QAction* action : menuBar()->actions())
        if (action->isVisible())
            menus +=
                roundEachMenu + fontMetrics().size(Qt::TextShowMnemonic, action->text()).width();
    const int room = area_->width() - menus;
    const bool fits =
        fontMetrics().horizontalAdvance(signTexts_.first) + 2 * Theme::Spacing <= room;
    const QString& text = fits ? signTexts_.first : signTexts_.second;
    const QString color = palette().color(QPalette::WindowText).name();
    sign_->setText(signLeads_ ? "<a href=\"drivers\" style=\"color:" + color + "\">" + text + "</a>"
                              : text);
    menuBar()->setCornerWidget(sign_); // makes room for the new text
}

void MainWindow::showLog() {
    // Not a child of this window, which it would always cover.
    log_ = new DebugWindow(form_.debugForm, nullptr);
    log_->setWindowIcon(windowIcon());
    log_->show();
}

void MainWindow::showAbout() {
    auto* window = new AboutWindow(form_.about, this);
    about_ = window;
    window->setAttribute(Qt::WA_DeleteOnClose);
    On(window, form_.about.Closed, [window] { window->close(); });
    On(window, form_.about.FocusWanted, [window] {
        window->raise();
        window->activateWindow();
    });
    window->show();
}

} // namespace corvane
