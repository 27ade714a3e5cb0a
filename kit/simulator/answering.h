// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_ANSWERING_H
#define SIMULATOR_ANSWERING_H

#include <QtCore/QStringList>
#include <QtCore/QVariantList>

/** How a raw application answers method calls of one kind. */
struct Answering
{
    /** Unset: never. */
    bool isGiven = true;
    int delayMs = 0;
    /** Name of the error that is the answer; empty for a reply. */
    QString error;
    /** The values of the reply, if they are not those that belong there. */
    bool hasValues = false;
    QVariantList values;
};

/** Reads `now`, `never`, `late SECONDS`, `error NAME` or `with VALUE...`; what is wrong, empty if nothing. */
QString readAnswering(const QStringList &words, Answering *answering);

#endif
