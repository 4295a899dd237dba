#include "db/u_query.h"

// The :name parameters of a query's text, and their values.

namespace db {

namespace {

bool isIdentStart(QChar c) { return c.isLetter() || c == u'_'; }
bool isIdentChar(QChar c) { return c.isLetterOrNumber() || c == u'_' || c == u'$'; }

// Each endOf... takes the text and where its construct starts, and returns
// where the construct ends (the end of the text when it is not closed).

// Block comments nest.
qsizetype endOfBlockComment(QStringView sql, qsizetype i)
{
    const qsizetype n = sql.size();
    qsizetype j = i + 2;
    int depth = 1;
    while (j < n && depth > 0) {
        if (sql[j] == u'/' && j + 1 < n && sql[j + 1] == u'*') {
            ++depth;
            j += 2;
        } else if (sql[j] == u'*' && j + 1 < n && sql[j + 1] == u'/') {
            --depth;
            j += 2;
        } else {
            ++j;
        }
    }
    return j;
}

// '...', with '' inside; after E, backslash escapes too.
qsizetype endOfString(QStringView sql, qsizetype i)
{
    const qsizetype n = sql.size();
    const bool escapes = i > 0 && (sql[i - 1] == u'E' || sql[i - 1] == u'e') && !(i > 1 && isIdentChar(sql[i - 2]));
    qsizetype j = i + 1;
    while (j < n) {
        if (escapes && sql[j] == u'\\') {
            j += 2;
        } else if (sql[j] == u'\'') {
            if (j + 1 < n && sql[j + 1] == u'\'') {
                j += 2;
            } else {
                ++j;
                break;
            }
        } else {
            ++j;
        }
    }
    return qMin(j, n);
}

qsizetype endOfQuotedIdent(QStringView sql, qsizetype i)
{
    const qsizetype n = sql.size();
    qsizetype j = i + 1;
    while (j < n) {
        if (sql[j] == u'"') {
            if (j + 1 < n && sql[j + 1] == u'"') {
                j += 2;
                continue;
            }
            ++j;
            break;
        }
        ++j;
    }
    return j;
}

// $tag$ ... $tag$ (a bare $n is a positional parameter, left alone: only the
// $ is passed over).
qsizetype endOfDollarQuote(QStringView sql, qsizetype i)
{
    const qsizetype n = sql.size();
    qsizetype j = i + 1;
    while (j < n && (isIdentStart(sql[j]) || (j > i + 1 && sql[j].isDigit())))
        ++j;
    if (j < n && sql[j] == u'$') {
        const QStringView tag = sql.mid(i, j - i + 1);
        const qsizetype close = sql.indexOf(tag, j + 1);
        return close < 0 ? n : close + tag.size();
    }
    return i + 1;
}

// The parameter's number, 1-based; the same name (in any case) keeps its number.
qsizetype paramNumber(QStringList &found, const QString &name)
{
    for (qsizetype k = 0; k < found.size(); ++k)
        if (found[k].compare(name, Qt::CaseInsensitive) == 0)
            return k + 1;
    found.append(name);
    return found.size();
}

} // namespace

QByteArray Query::translateParams(const QString &sql, QStringList *names)
{
    QStringList found;
    QString out;
    out.reserve(sql.size() + 16);
    const qsizetype n = sql.size();
    qsizetype i = 0;
    auto copyTo = [&](qsizetype end) {
        out += QStringView(sql).mid(i, end - i);
        i = end;
    };
    while (i < n) {
        const QChar c = sql[i];
        const QChar next = i + 1 < n ? sql[i + 1] : QChar();
        if (c == u'-' && next == u'-') {
            qsizetype e = sql.indexOf(u'\n', i);
            copyTo(e < 0 ? n : e);
        } else if (c == u'/' && next == u'*') {
            copyTo(endOfBlockComment(sql, i));
        } else if (c == u'\'') {
            copyTo(endOfString(sql, i));
        } else if (c == u'"') {
            copyTo(endOfQuotedIdent(sql, i));
        } else if (c == u'$' && !(i > 0 && isIdentChar(sql[i - 1]))) {
            copyTo(endOfDollarQuote(sql, i));
        } else if (c == u':' && next == u':') {
            copyTo(i + 2);
        } else if (c == u':' && !next.isNull() && isIdentStart(next)) {
            qsizetype j = i + 1;
            while (j < n && (sql[j].isLetterOrNumber() || sql[j] == u'_'))
                ++j;
            out += u'$' + QString::number(paramNumber(found, sql.mid(i + 1, j - i - 1)));
            i = j;
        } else {
            out += c;
            ++i;
        }
    }
    if (names)
        *names = found;
    return out.toUtf8();
}

void Query::setSql(const QString &sql)
{
    if (sql == m_sql)
        return;
    close();
    const QStringList oldNames = m_paramNames;
    const QVariantList oldValues = m_params;
    m_sql = sql;
    translateParams(sql, &m_paramNames);
    m_params.clear();
    for (const QString &name : std::as_const(m_paramNames)) {
        QVariant v;
        for (qsizetype k = 0; k < oldNames.size(); ++k)
            if (oldNames[k].compare(name, Qt::CaseInsensitive) == 0)
                v = oldValues.value(k);
        m_params.append(v);
    }
}

void Query::setParam(const QString &name, const QVariant &value)
{
    for (qsizetype k = 0; k < m_paramNames.size(); ++k)
        if (m_paramNames[k].compare(name, Qt::CaseInsensitive) == 0) {
            m_params[k] = value;
            return;
        }
    throw QuarvError(QStringLiteral("Parametrul '%1' nu exista").arg(name));
}

QVariant Query::param(const QString &name) const
{
    for (qsizetype k = 0; k < m_paramNames.size(); ++k)
        if (m_paramNames[k].compare(name, Qt::CaseInsensitive) == 0)
            return m_params.value(k);
    throw QuarvError(QStringLiteral("Parametrul '%1' nu exista").arg(name));
}

} // namespace db
