// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

/// An Apache httpd of the test's own: one process, in a temporary folder, on a free port of the loopback interface. It
/// has two pages, one behind Basic and one behind Digest authentication, and ends with this object.
class Httpd {
public:
    Httpd() = default;
    Httpd(Httpd const&) = delete;
    Httpd& operator=(Httpd const&) = delete;
    ~Httpd()
    {
        m_process.terminate();
        if (!m_process.waitForFinished(5000))
            m_process.kill();
    }

    /// The two files name the users: an AuthUserFile for each way.
    bool start(QString const& realm, QByteArray const& basicFile, QByteArray const& digestFile)
    {
        // Begun by root, the server reads as somebody else.
        if (!QFile::setPermissions(m_folder.path(), QFile::Permissions(0x7055)))
            return false;
        write("basic.users", basicFile);
        write("digest.users", digestFile);
        write("basic", "let in\n");
        write("digest", "let in\n");
        for (int attempt = 0; attempt < 5; ++attempt) { // Another process may take the port in between.
            m_port = freePort();
            write("httpd.conf", configuration(realm));
            m_process.start(HTTPD_PROGRAM, {"-X", "-f", path("httpd.conf")});
            if (waitUntilItListens())
                return true;
        }
        return false;
    }

    QString address(QString const& page) const
    {
        return QStringLiteral("http://127.0.0.1:%1/%2").arg(m_port).arg(page);
    }

    QByteArray errorLog()
    {
        QFile log(path("error.log"));
        return m_process.readAllStandardError() + (log.open(QIODevice::ReadOnly) ? log.readAll() : QByteArray());
    }

private:
    QString path(QString const& name) const { return m_folder.filePath(name); }

    void write(QString const& name, QByteArray const& content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("%s cannot be written", qPrintable(file.fileName()));
    }

    QByteArray configuration(QString const& realm) const
    {
        QString text = QStringLiteral("ServerRoot \"%1\"\n"
                                      "DefaultRuntimeDir \"%1\"\n"
                                      "ServerName localhost\n"
                                      "Listen 127.0.0.1:%2\n"
                                      "PidFile \"%1/httpd.pid\"\n"
                                      "ErrorLog \"%1/error.log\"\n"
                                      "DocumentRoot \"%1\"\n"
                                      "User nobody\n"
                                      "Group nogroup\n")
                           .arg(m_folder.path())
                           .arg(m_port);
        for (char const* const module :
            {"mpm_event", "authn_core", "authn_file", "authz_core", "authz_user", "auth_basic", "auth_digest"})
            text += QStringLiteral("LoadModule %1_module \"%2/mod_%1.so\"\n").arg(module, HTTPD_MODULES);
        for (char const* const way : {"Basic", "Digest"})
            text += QStringLiteral("<Location \"/%1\">\n"
                                   "  AuthType %2\n"
                                   "  AuthName \"%3\"\n"
                                   "  AuthUserFile \"%4/%1.users\"\n"
                                   "  Require valid-user\n"
                                   "</Location>\n")
                        .arg(QString(way).toLower(), way, realm, m_folder.path());
        return text.toLatin1();
    }

    static sockaddr_in loopback(int port)
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<in_port_t>(port));
        return address;
    }

    static int freePort()
    {
        int const socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address = loopback(0);
        socklen_t size = sizeof(address);
        auto* const general = reinterpret_cast<sockaddr*>(&address);
        bool const isBound = bind(socket, general, size) == 0 && getsockname(socket, general, &size) == 0;
        close(socket);
        return isBound ? ntohs(address.sin_port) : 0;
    }

    bool listens() const
    {
        int const socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in const address = loopback(m_port);
        bool const isConnected = connect(socket, reinterpret_cast<sockaddr const*>(&address), sizeof(address)) == 0;
        close(socket);
        return isConnected;
    }

    /// False where the process ends instead.
    bool waitUntilItListens()
    {
        if (!m_process.waitForStarted())
            return false;
        while (!m_process.waitForFinished(50) && m_process.state() == QProcess::Running) {
            if (listens())
                return true;
        }
        return false;
    }

    QTemporaryDir m_folder;
    QProcess m_process;
    int m_port = 0;
};
