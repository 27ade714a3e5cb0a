// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_OUTPUT_H
#define CALLCTL_OUTPUT_H

#include <QtCore/QObject>
#include <memory>

/**
 * Standard output, for a program that has to go on when nobody reads: a thread of its own writes, and waits
 * where that waits.
 */
class Output : public QObject
{
    Q_OBJECT

public:
    Output();
    /** Leaves alone what cannot be written. */
    ~Output() override;

    /** Writes everything, however long that takes; throws Failure when it cannot be written. */
    static void print(const QByteArray &bytes);

    /** Whether all of what was given to it is written. */
    bool isIdle() const;

    /** Only when it is idle. */
    void write(const QByteArray &bytes);

    /** Waits until it is idle, but not for longer than a person would notice. */
    void finish();

Q_SIGNALS:
    /** What write() was given is written. */
    void idle();

    /** It could not be written, and nothing can be any more. */
    void failed(const QString &reason);

private:
    struct Shared;
    static void run(const std::shared_ptr<Shared> &shared);

    std::shared_ptr<Shared> m_shared;
};

#endif
