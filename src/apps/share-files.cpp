// Part of the build: writes into a folder what an installed program puts into the system's folder
// "share" for desktops, with pictures of the icons in the usual sizes.
#include "apps/support/FileTypes.h"
#include "system/DiskFiles.h"

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

namespace {

using namespace corvane;

bool writePictures(const std::string& share, const std::string& folder, const std::string& name,
                   const std::string& svg) {
    QSvgRenderer renderer(QByteArray::fromStdString(svg));
    bool good = renderer.isValid();
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256}) {
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        renderer.setAspectRatioMode(Qt::KeepAspectRatio);
        renderer.render(&painter);
        painter.end();
        const QString side = QString::number(size);
        const QString place = QString::fromStdString(share) + "/icons/hicolor/" + side + "x" +
                              side + "/" + QString::fromStdString(folder);
        good = QDir().mkpath(place) &&
               image.save(place + "/" + QString::fromStdString(name) + ".png") && good;
    }
    return good;
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    if (argc != 2)
        return 2;
    const std::string share = argv[1];
    const RunModes modes;
    const KODebug debug(modes);
    const DesktopProgram program = DescribeForDesktop(KOProductList(ProgramVendor(), debug), {});
    DiskFiles files;
    DesktopFiles(share, files).Write(program);
    bool good = writePictures(share, "apps", DesktopProgram::Id, program.icon);
    for (const DocumentKind& kind : program.kinds)
        good = writePictures(share, "mimetypes", kind.iconName(), kind.icon) && good;
    if (!good)
        std::fprintf(stderr, "The icons could not be written to %s.\n", share.c_str());
    return good ? 0 : 1;
}
