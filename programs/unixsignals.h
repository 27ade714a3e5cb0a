// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLET_UNIXSIGNALS_H
#define RINGLET_UNIXSIGNALS_H

#include <QtCore/QObject>
#include <initializer_list>

/**
 * Turns signals of the operating system into signals of the event loop. One object per process; the
 * numbers it was made for are handled by it from then on, and as by default when it goes.
 */
class UnixSignals : public QObject
{
    Q_OBJECT

public:
    /** What a second signal of the same number does: it is received like the first, or ends the process at once. */
    enum class Second { IsReceived, EndsTheProcess };

    explicit UnixSignals(std::initializer_list<int> numbers, Second second = Second::IsReceived);
    ~UnixSignals() override;

    /** Why the signals are not handled, for people; empty when they are. A program had better end then. */
    QString errorString() const { return m_error; }

Q_SIGNALS:
    /** `number` such as SIGTERM has come, once or several times. */
    void received(int number);

private:
    void drain();

    QList<int> m_numbers;
    QString m_error;
    int m_pipe[2] = {-1, -1};
};

#endif
