// What a window does with a product that its document is not made for.
#include "support/OtherProducts.h"
#include "support/ProductWindow.h"

#include <QLabel>

namespace corvane {
namespace {

class OtherProduct : public ProductWindow, public testing::WithParamInterface<WrongPair> {
  protected:
    OtherProduct() : ProductWindow(GetParam().vendor) {}

    /// All texts of boxes and dialogs that come up while the button is pressed.
    std::string readWhilePressing(const char* caption) {
        std::string read;
        const auto readLabels = [&read](QWidget& dialog) {
            for (const QLabel* label : dialog.findChildren<QLabel*>())
                if (label->isVisible())
                    read += label->text().toStdString() + "\n";
        };
        whenShown<QMessageBox>([&](QMessageBox& box) {
            readLabels(box);
            QTest::mouseClick(box.button(box.button(QMessageBox::No) != nullptr ? QMessageBox::No
                                                                                : QMessageBox::Ok),
                              Qt::LeftButton);
        });
        press(caption);
        for (QWidget* dialog : QApplication::topLevelWidgets())
            if (qobject_cast<QDialog*>(dialog) != nullptr && dialog->isVisible()) {
                QApplication::processEvents();
                readLabels(*dialog);
                QTest::keyClick(dialog, Qt::Key_Return);
            }
        return read;
    }
};

TEST_P(OtherProduct, IsNamedAndGetsNoByte) {
    const WrongPair& pair = GetParam();
    const std::string name = "document." + pair.extension;
    open(desk.folder.file(name, DocumentOf(pair.extension)));
    desk.bench.noteFrames = true;
    const LinkBench::Plugged& plugged = desk.bench.plugIn(pair.product);
    desk.bench.run(100);
    const std::string read =
        readWhilePressing(pair.extension == "Quillon" ? "Upload to Quillon" : "Program");
    EXPECT_NE(read.find(pair.named), std::string::npos) << read;
    EXPECT_EQ(WritesAmong(plugged.frames), 0);
    EXPECT_FALSE(desk.bench.link.InUse());
    EXPECT_FALSE(desk.bench.link.Negotiated());
}

INSTANTIATE_TEST_SUITE_P(Table, OtherProduct, testing::ValuesIn(WrongPairs()));

} // namespace
} // namespace corvane
