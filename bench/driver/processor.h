// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_PROCESSOR_H
#define BENCH_PROCESSOR_H

/**
 * Where this process runs from now on, with what it starts: applications and the bus daemon on one processor, what
 * is measured on another. Left to itself, the scheduler puts one program's threads together and another's apart, and
 * keeps to it for as long as they run; that would be the difference that is measured.
 */
enum class Side { Applications, Measured };
void runOn(Side side);

/** For what is not timed: from here on a side is wherever there is room. */
void runAnywhere();

/** On the processor of this number, which counts from 0. */
void runOn(long processor);

long processorCount();

#endif
