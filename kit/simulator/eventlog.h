// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_EVENTLOG_H
#define SIMULATOR_EVENTLOG_H

#include <QtCore/QObject>
#include <QtCore/QQueue>

/**
 * What happens, one line each: printed on standard output at once, and kept for a script that waits for
 * it. Lines that are very long are cut, and of lines that no script asks for the oldest go. They are documented
 * in docs/simulator.md; other programs read them.
 */
class EventLog : public QObject
{
    Q_OBJECT
public:
    void add(const QString &line);

    bool isEmpty() const { return m_lines.isEmpty(); }

    /** The oldest line that is kept, and no longer so. */
    QString take();

    /** Prints lines that are an answer to a command, and no event. */
    static void print(const QString &line);

Q_SIGNALS:
    void added();

private:
    QQueue<QString> m_lines;
    int m_characters = 0;
};

#endif
