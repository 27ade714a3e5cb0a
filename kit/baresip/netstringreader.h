// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BARESIP_NETSTRINGREADER_H
#define BARESIP_NETSTRINGREADER_H

#include <QtCore/QByteArray>
#include <QtCore/QList>

/** Takes a byte stream apart into netstrings: "LENGTH:CONTENT,", one behind the other. */
class NetstringReader
{
public:
    /** More than any answer of baresip's has; whoever announces more is not listened to. */
    static constexpr int maximumSize = 1 << 20;

    /**
     * Reads on. The messages that are complete now are appended to `messages`. False when the bytes are no
     * netstrings; nothing can be read behind them until reset().
     */
    bool read(const QByteArray &bytes, QList<QByteArray> *messages);

    /** A new stream begins. */
    void reset();

    /** The netstring of a message. */
    static QByteArray frame(const QByteArray &message);

private:
    enum class Step { Done, Incomplete, Broken };
    Step take(QByteArray *message);

    QByteArray m_pending;
    bool m_isBroken = false;
};

#endif
