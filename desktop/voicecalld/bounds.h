// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_BOUNDS_H
#define VOICECALLD_BOUNDS_H

#include <QtCore/QString>

/**
 * How much of what applications say is shown: whoever asks for all calls or providers gets them in one
 * message, which has to stay within what the bus lets through. 0 stands for no bound.
 */
struct Bounds
{
    /** How many of a kind. */
    struct Most
    {
        int ofEach = 0;
        int inAll = 0;
    };

    /** Characters of a name or address. */
    int longestText = 256;
    Most calls = {1000, 5000};
    Most providers = {100, 1000};
    /** Bytes of a message. */
    int largestMessage = 134000000;

    /** The same, with no more calls and providers than fit into a message. */
    Bounds fitting() const;

    /** `text` for people, with a mark where something is cut off. */
    QString cut(const QString &text) const;

    /** Whether a provider's id can be shown; it is never cut, for it has to stay what it is. */
    bool admitsId(const QString &id) const;
};

#endif
