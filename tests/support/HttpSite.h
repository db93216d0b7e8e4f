#pragma once

#include <QTcpServer>
#include <QTcpSocket>

#include <map>
#include <string>
#include <vector>

namespace corvane {

/// A real HTTP server on loopback, whose pages behave as the test says.
class HttpSite {
  public:
    struct Page {
        std::string body;
        int status = 200;
        bool knowsParts = true; ///< Answers a request for a part with that part.
        int cutAfter = -1;      ///< Breaks the connection after so many bytes, once.
    };

    HttpSite() {
        server_.listen(QHostAddress::LocalHost);
        QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] {
            QTcpSocket* socket = server_.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                QByteArray& request = received_[socket];
                request += socket->readAll();
                if (request.endsWith("\r\n\r\n"))
                    answer(*socket, received_.extract(socket).mapped());
            });
        });
    }

    Page& operator[](const std::string& path) { return pages_[path]; }
    [[nodiscard]] std::string url(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(server_.serverPort()) + path;
    }

    std::vector<std::string> requests; ///< Path of each, and the part asked for.

  private:
    void answer(QTcpSocket& socket, const QByteArray& request) {
        const QByteArray path = request.split(' ').value(1);
        const qsizetype range = request.toLower().indexOf("range: bytes=");
        qsizetype from = 0;
        if (range >= 0)
            from = request.mid(range + 13, request.indexOf('-', range) - range - 13).toLongLong();
        requests.push_back(path.toStdString() + (from > 0 ? " from " + std::to_string(from) : ""));
        const auto found = pages_.find(path.toStdString());
        if (found == pages_.end()) {
            socket.write("HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\nGone");
            return;
        }
        Page& page = found->second;
        QByteArray body = QByteArray::fromStdString(page.body);
        QByteArray head = "HTTP/1.1 " + QByteArray::number(page.status) + " Status\r\n";
        if (from > 0 && page.knowsParts) {
            head = "HTTP/1.1 206 Part\r\nContent-Range: bytes " + QByteArray::number(from) + "-" +
                   QByteArray::number(body.size() - 1) + "/" + QByteArray::number(body.size()) +
                   "\r\n";
            body.remove(0, from);
        }
        head += "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n";
        if (page.cutAfter >= 0) {
            body.truncate(page.cutAfter);
            page.cutAfter = -1;
            socket.write(head + body);
            socket.flush();
            socket.disconnectFromHost();
            return;
        }
        socket.write(head + body);
    }

    QTcpServer server_;
    std::map<std::string, Page> pages_;
    std::map<QTcpSocket*, QByteArray> received_;
};

} // namespace corvane
