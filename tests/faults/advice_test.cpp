// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// What the advised limits of the bus change.

#include "faultcell.h"

#include "printers.h"
#include "processfacts.h"

namespace {

class AdvisedBusCell : public FaultCell
{
protected:
    /** The daemon throws out an application that goes beyond a limit of the kind that it checks on arrival. */
    void expectThrownOut()
    {
        beginDeparture();
        EXPECT_EQ(faulty.waitForExit(), 0) << "the application is still on the bus";
    }
};

} // namespace

TEST_F(AdvisedBusCell, DescriptorsDoNotReachTheHost)
{
    ASSERT_NO_FATAL_FAILURE(bringUpFaulty());
    const qint64 pid = host.program().processId();
    ASSERT_TRUE(ProcessFacts::limitDescriptors(pid, ProcessFacts::openDescriptors(pid) + 4));
    faulty.type("descriptors 10");
    expectThrownOut();
    honest.makeCall();
}
