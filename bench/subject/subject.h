// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_SUBJECT_H
#define BENCH_SUBJECT_H

#include "control.h"

#include <QtCore/QObject>

/**
 * A receiver on the session bus that the driver measures: carries out its requests on the main thread, and
 * reports what happens with the time at which it did.
 */
class Subject : public QObject
{
    Q_OBJECT

public:
    /** Reports that it is ready, and runs until the driver goes. */
    int run();

protected:
    /** Answer, Hold or SendTones. */
    virtual void command(Command command, uint32_t call) = 0;
    virtual void changeRoute() = 0;
    virtual void changeDevices() = 0;
    virtual void trace(uint32_t lines) = 0;

private:
    void serve();
    void carryOut(const Request &request);
    void perform(const Request &request);
};

#endif
