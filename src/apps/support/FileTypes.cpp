#include "apps/support/FileTypes.h"

#include "base/Text.h"
#include "shell/Startup.h"
#include "system/Programs.h"
#include "system/UserFolders.h"

#include <QFile>

#include <algorithm>

namespace corvane {

namespace {

std::string picture(const std::string& name) {
    QFile file(QString::fromStdString(":/pictures/" + name + ".svg"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
}

} // namespace

DesktopProgram DescribeForDesktop(const KOProductList& products, const std::string& command) {
    DesktopProgram program{command, picture("logo"), {}};
    for (int index = 1; index <= products.Size(); ++index) {
        const KOProductProfile& product = products.ByIndex(index);
        const std::string name = LowerCase(product.Name);
        auto kind = std::find_if(program.kinds.begin(), program.kinds.end(),
                                 [&](const DocumentKind& known) { return known.name == name; });
        if (kind == program.kinds.end())
            kind = program.kinds.insert(kind, {name, product.fileDescription,
                                               LowerCase(product.fileExtension), false,
                                               picture("document-" + name)});
        kind->opensProgram = kind->opensProgram || product.associateExtension;
    }
    return program;
}

void RegisterFileTypes(const KOProductList& products, SettingsStore& store, FileDoor& files) {
    RegisterAllFileAssociations(products, store);
    const std::string executable = KOIOExecutablePath();
    const DesktopProgram program = DescribeForDesktop(products, executable);
    DesktopFiles desktop(DataFolder(), files);
    // Where the system knows the program, what an earlier one left for this user is in the way.
    if (IsInstalledForAll(executable) ? desktop.Remove(program) : desktop.Write(program))
        desktop.Announce();
}

} // namespace corvane
