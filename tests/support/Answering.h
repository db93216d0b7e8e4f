#pragma once

#include "support/RandomEdits.h"

#include <QApplication>
#include <QColorDialog>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

namespace corvane {

/// Answers whatever box stops everything, at random, as long as it lives. A box that tells a
/// caller's fault is a failure.
class Answering {
  public:
    /// `pictures` are chosen where files are asked for.
    Answering(Random& random, std::vector<QString> pictures)
        : random_(random), pictures_(std::move(pictures)) {
        QObject::connect(&timer_, &QTimer::timeout, [this] { answer(); });
        timer_.start(1);
    }

  private:
    void answer() {
        QWidget* box = QApplication::activeModalWidget();
        if (box == nullptr || !box->isVisible())
            return;
        if (auto* message = qobject_cast<QMessageBox*>(box)) {
            if (message->text().contains("Assertion"))
                ADD_FAILURE() << message->text().toStdString();
            const auto buttons = message->buttons();
            QTest::mouseClick(buttons[random_.below(static_cast<int>(buttons.size()))],
                              Qt::LeftButton);
        } else if (auto* files = qobject_cast<QFileDialog*>(box);
                   files != nullptr && files->windowTitle() == "Change Picture" &&
                   random_.below(2) == 0) {
            files->findChild<QLineEdit*>("fileNameEdit")
                ->setText(
                    pictures_[static_cast<std::size_t>(random_.below(int(pictures_.size())))]);
            QTest::keyClick(box, Qt::Key_Return);
        } else if (auto* input = qobject_cast<QInputDialog*>(box)) {
            input->setTextValue(QString::number(random_.below(300) / 100.0));
            QTest::keyClick(box, random_.below(3) == 0 ? Qt::Key_Escape : Qt::Key_Return);
        } else if (auto* colors = qobject_cast<QColorDialog*>(box)) {
            colors->setCurrentColor(QColor::fromRgb(static_cast<QRgb>(random_.below(0x1000000))));
            QTest::keyClick(box, random_.below(3) == 0 ? Qt::Key_Escape : Qt::Key_Return);
        } else {
            QTest::keyClick(box, Qt::Key_Escape);
        }
    }

    Random& random_;
    std::vector<QString> pictures_;
    QTimer timer_;
};

} // namespace corvane
