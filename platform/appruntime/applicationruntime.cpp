// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "applicationruntime.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QVector>
#include <algorithm>

/** The unit names that name an application; what is captured makes up its id, joined by underscores. */
static QVector<QRegularExpression> makeUnitNames()
{
    // Dashes and backslashes inside a field are escaped, so a plain dash always separates two fields, and a
    // backslash that starts no escape makes the whole name malformed.
    const auto field = QStringLiteral(R"((?:[^-@\\]|\\x[0-9A-Fa-f]{2})+)");
    // Names of snaps and of their applications keep their dashes; a dot separates the two.
    const auto snap = QStringLiteral(R"(([a-z0-9-]+(?:_[a-z0-9]+)?)\.([A-Za-z0-9-]+))");
    const auto uuid = QStringLiteral("[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}");
    return {
        QRegularExpression(QStringLiteral(R"(\Aapp-(?:%1-)?(%1)(?:@.+)?\.service\z)").arg(field)),
        QRegularExpression(QStringLiteral(R"(\Aapp-(?:%1-)?(%1)-%1\.scope\z)").arg(field)),
        QRegularExpression(QStringLiteral(R"(\Asnap\.%1\.service\z)").arg(snap)),
        QRegularExpression(QStringLiteral(R"(\Asnap\.%1[-.]%2\.scope\z)").arg(snap, uuid)),
    };
}

static bool isUnreadable(QChar character)
{
    return character.category() == QChar::Other_Control || character == QChar::ReplacementCharacter;
}

/** Undoes the escaping of a well-formed field; empty when the result is no readable text. */
static QString unescaped(const QString &field)
{
    const QByteArray bytes = QByteArray::fromPercentEncoding(field.toUtf8().replace("\\x", "\\"), '\\');
    // With the size, for otherwise the text would end before an escaped null byte.
    const QString text = QString::fromUtf8(bytes.constData(), bytes.size());
    return std::any_of(text.cbegin(), text.cend(), isUnreadable) ? QString() : text;
}

static QString appIdFromUnit(const QString &unit)
{
    static const QVector<QRegularExpression> unitNames = makeUnitNames();
    for (const QRegularExpression &name : unitNames) {
        const QRegularExpressionMatch match = name.match(unit);
        if (match.hasMatch())
            return unescaped(match.capturedTexts().mid(1).join(QLatin1Char('_')));
    }
    return QString();
}

/** A process may stand in a group inside its unit's, and a unit inside another's: the innermost tells. */
static QString appIdFromPath(const QString &path)
{
    const QStringList groups = path.split(QLatin1Char('/'));
    QString id;
    for (auto group = groups.crbegin(); group != groups.crend() && id.isEmpty(); ++group)
        id = appIdFromUnit(*group);
    return id;
}

static bool isNumber(const QStringRef &text)
{
    const auto isDigit = [](QChar character) { return character >= QLatin1Char('0') && character <= QLatin1Char('9'); };
    return !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), isDigit);
}

/** The path on the line "NUMBER:CONTROLLERS:PATH" with these controllers; empty when there is none. */
static QString pathInHierarchy(const QString &cgroups, const QString &controllers)
{
    const QString separated = QLatin1Char(':') + controllers + QLatin1Char(':');
    const QVector<QStringRef> lines = cgroups.splitRef(QLatin1Char('\n'));
    for (const QStringRef &line : lines) {
        const int colon = line.indexOf(QLatin1Char(':'));
        if (isNumber(line.left(colon)) && line.mid(colon).startsWith(separated))
            return line.mid(colon + separated.size()).toString();
    }
    return QString();
}

ApplicationRuntime::ApplicationRuntime(const QString &procfs) : m_procfs(procfs) { }

ApplicationRuntime &ApplicationRuntime::instance()
{
    static ApplicationRuntime runtime;
    return runtime;
}

QString ApplicationRuntime::getAppIdByPid(int pid) const
{
    QFile file(m_procfs + QStringLiteral("/%1/cgroup").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return appIdFromCgroups(QString::fromUtf8(file.readAll()));
}

QString ApplicationRuntime::appIdFromCgroups(const QString &cgroups)
{
    // The unified hierarchy has no controllers on its line. Where it is not in use for units, the line is
    // missing or says nothing but "/".
    const QString id = appIdFromPath(pathInHierarchy(cgroups, QString()));
    if (!id.isEmpty())
        return id;
    return appIdFromPath(pathInHierarchy(cgroups, QStringLiteral("name=systemd")));
}
