#include "apps/support/UpdateSettings.h"
#include "support/UpdatesFromFile.h"

#include <QSslCertificate>
#include <QSslConfiguration>

namespace corvane {

UpdateSource BuiltInUpdateSource() {
    const UpdatesFromFile settings = UpdatesFromFile::read();
    QSslConfiguration trust = QSslConfiguration::defaultConfiguration();
    trust.addCaCertificates(QString::fromStdString(settings.authority));
    QSslConfiguration::setDefaultConfiguration(trust);
    UpdateSource source;
    source.url = settings.url;
    source.key = settings.key;
    return source;
}

} // namespace corvane
