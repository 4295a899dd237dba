#pragma once
// The one exception type of the program: it carries the text the operator sees
// (Romanian for our own checks, the server's own message for database errors).

#include <QByteArray>
#include <QString>
#include <exception>

class QuarvError : public std::exception {
public:
    explicit QuarvError(QString text, QString sqlState = {})
        : m_text(std::move(text)), m_sqlState(std::move(sqlState)), m_utf8(m_text.toUtf8()) {}

    const QString &text() const noexcept { return m_text; }
    // SQLSTATE of a server error ("08006"...), empty for errors of our own.
    const QString &sqlState() const noexcept { return m_sqlState; }
    const char *what() const noexcept override { return m_utf8.constData(); }

private:
    QString m_text;
    QString m_sqlState;
    QByteArray m_utf8;
};
