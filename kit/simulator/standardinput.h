// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_STANDARDINPUT_H
#define SIMULATOR_STANDARDINPUT_H

#include <QtCore/QByteArray>
#include <QtCore/QObject>

class QSocketNotifier;

/** Lines typed on standard input. */
class StandardInput : public QObject
{
    Q_OBJECT
public:
    explicit StandardInput(QObject *parent = nullptr);

    void start();

Q_SIGNALS:
    void lineRead(const QString &line);

    /** The user at the terminal has had enough. Not emitted when the input is no terminal: it may be /dev/null. */
    void endedByUser();

private:
    void read();
    void takeLines();

    QSocketNotifier *m_notifier = nullptr;
    QByteArray m_pending;
};

#endif
