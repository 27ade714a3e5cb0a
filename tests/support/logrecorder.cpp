// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "logrecorder.h"

#include <QtCore/QLoggingCategory>
#include <QtCore/QMutex>

// Messages also come from the bus library's thread.
static QMutex mutex;
static QStringList recorded;

static const char *levelName(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return "debug";
    case QtInfoMsg:
        return "info";
    case QtWarningMsg:
        return "warning";
    case QtCriticalMsg:
        return "critical";
    case QtFatalMsg:
        return "fatal";
    }
    return "unknown";
}

static void record(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const QMutexLocker lock(&mutex);
    recorded.append(
        QStringLiteral("%1 %2: %3").arg(QLatin1String(levelName(type)), QLatin1String(context.category), text));
}

LogRecorder::LogRecorder()
{
    clear();
    QLoggingCategory::setFilterRules(QStringLiteral("voicecall=true\ndefault=true"));
    qInstallMessageHandler(record);
}

LogRecorder::~LogRecorder()
{
    qInstallMessageHandler(nullptr);
    QLoggingCategory::setFilterRules(QString());
}

QStringList LogRecorder::entries() const
{
    const QMutexLocker lock(&mutex);
    return recorded;
}

QStringList LogRecorder::startingWith(const QString &prefix) const
{
    QStringList found;
    const QStringList all = entries();
    for (const QString &entry : all) {
        if (entry.startsWith(prefix))
            found.append(entry);
    }
    return found;
}

void LogRecorder::clear()
{
    const QMutexLocker lock(&mutex);
    recorded.clear();
}
