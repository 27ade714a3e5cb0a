// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_EVENTLOG_H
#define SIMULATOR_EVENTLOG_H

#include <QtCore/QObject>
#include <QtCore/QStringList>

/**
 * What happens, one line each: printed on standard output at once, and kept for a script that waits for
 * it. The lines are documented in docs/simulator.md; other programs read them.
 */
class EventLog : public QObject
{
    Q_OBJECT
public:
    void add(const QString &line);

    int count() const { return m_lines.size(); }

    QString at(int index) const { return m_lines.at(index); }

    /** Prints a line that is an answer to a command, and no event. */
    static void print(const QString &line);

Q_SIGNALS:
    void added();

private:
    QStringList m_lines;
};

#endif
