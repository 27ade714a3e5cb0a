// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_BOX_H
#define TESTS_BOX_H

#include <QtCore/QByteArray>
#include <memory>

/** Programs on a bus of their own, against which inputs are played. Whatever does not hold is a finding. */
class Box
{
public:
    virtual ~Box() = default;

    /** One input. */
    virtual void play(const QByteArray &input) = 0;

    /** Ends the programs, which then say whether they have lost memory. */
    virtual void finish() = 0;

    /** Their resident memory in KiB. */
    virtual int memory() const = 0;
};

/** voicecalld with the plug-in, beside an application that is honest. */
std::unique_ptr<Box> makeHostBox();

/** The applications of the kit and the host's command line, for which the input is host and stranger. */
std::unique_ptr<Box> makeApplicationsBox();

#endif
