// Lets the person at the screen use link devices: puts the udev rule in its place, asking for the
// rights in the system's own way, and says what it did.
#include "apps/udev-rules.h"

#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QProcess>
#include <QStandardPaths>

#include <cstdio>
#include <unistd.h>

namespace {

constexpr const char* OwnRulePath = "/etc/udev/rules.d/60-corvane.rules";
constexpr const char* PackagedRulePath = "/usr/lib/udev/rules.d/60-corvane.rules";

struct Outcome {
    bool done = false;
    QString text;
};

/// Whether a package has brought the same rule along already.
bool isPackaged() {
    QFile file(PackagedRulePath);
    return file.open(QIODevice::ReadOnly) && file.readAll() == corvane::UdevRules;
}

/// Runs as root: what is to be written comes in by the standard input.
QString installScript() {
    const QString write =
        isPackaged() ? QString("true") : QString("umask 022 && cat > %1").arg(OwnRulePath);
    return write + " && { udevadm control --reload-rules && "
                   "udevadm trigger --subsystem-match=usb --attr-match=idVendor=0403 || true; }";
}

Outcome install() {
    const QString rulePath = isPackaged() ? PackagedRulePath : OwnRulePath;
    QString program = "/bin/sh";
    QStringList arguments{"-c", installScript()};
    if (::geteuid() != 0) {
        const QString pkexec = QStandardPaths::findExecutable("pkexec");
        if (pkexec.isEmpty())
            return {false, "The rights to write " + rulePath +
                               " can't be asked for, since pkexec is not installed. Install it, "
                               "or copy the file 60-corvane.rules to /etc/udev/rules.d yourself."};
        arguments.prepend(program);
        program = pkexec;
    }
    QProcess process;
    process.start(program, arguments);
    process.write(corvane::UdevRules);
    process.closeWriteChannel();
    process.waitForFinished(-1);
    if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        return {true, "The rule that lets you use Corvane links now stands in " + rulePath +
                          ".\n\nUnplug the link and plug it in again."};
    const QString details = QString::fromLocal8Bit(process.readAllStandardError()).trimmed();
    return {false, "The rule that lets you use Corvane links could not be written to " + rulePath +
                       ".\n\n" +
                       (details.isEmpty() ? "The rights were not given. Try again, and enter the "
                                            "password when the system asks for it."
                                          : details)};
}

} // namespace

int main(int argc, char** argv) {
    const bool display =
        qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
    if (!display) {
        const QCoreApplication application(argc, argv);
        const Outcome outcome = install();
        std::fprintf(outcome.done ? stdout : stderr, "%s\n", qPrintable(outcome.text));
        return outcome.done ? 0 : 1;
    }
    const QApplication application(argc, argv);
    const Outcome outcome = install();
    if (outcome.done)
        QMessageBox::information(nullptr, "Corvane Drivers", outcome.text);
    else
        QMessageBox::critical(nullptr, "Corvane Drivers", outcome.text);
    return outcome.done ? 0 : 1;
}
