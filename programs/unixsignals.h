// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLET_UNIXSIGNALS_H
#define RINGLET_UNIXSIGNALS_H

#include <QtCore/QObject>
#include <initializer_list>

/**
 * Turns signals of the operating system into signals of the event loop. One object per process; the
 * numbers it was made for are handled by it from then on, and as before when it goes.
 */
class UnixSignals : public QObject
{
    Q_OBJECT

public:
    /** Throws std::system_error when the system refuses. */
    UnixSignals(std::initializer_list<int> numbers);
    ~UnixSignals() override;

Q_SIGNALS:
    /** `number` such as SIGTERM has come, once or several times. */
    void received(int number);

private:
    void drain();

    QList<int> m_numbers;
    int m_pipe[2] = {-1, -1};
};

#endif
