// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "step.h"

// The kinds stand in groups.

bool isByApplication(StepKind kind) { return kind >= StepKind::Register && kind <= StepKind::RequestBadly; }

bool isAnswer(StepKind kind) { return kind >= StepKind::Answer && kind <= StepKind::AnswerWithError; }

bool isReport(StepKind kind) { return kind >= StepKind::Add && kind <= StepKind::RemoveBadly; }

bool isLeave(StepKind kind) { return kind == StepKind::Leave || kind == StepKind::LeaveHalfWay; }

bool isCallSignal(StepKind kind) { return kind >= StepKind::Status && kind <= StepKind::RequestBadly; }

bool isCommand(StepKind kind) { return kind >= StepKind::HostAnswer && kind <= StepKind::HostSplit; }
