// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callscript.h"

const std::string callInterface = "zelkovar.Call.Call1";
const std::string dtmfInterface = "zelkovar.Call.DTMF1";
const std::string audioInterface = "zelkovar.Call.AudioControl1";

namespace {

const std::vector<std::string> plain = {callInterface};
const std::vector<std::string> withTones = {callInterface, dtmfInterface};
const std::vector<std::string> withAudio = {callInterface, audioInterface};
const std::vector<std::string> withAll = {callInterface, dtmfInterface, audioInterface};

const Step answer = {"Answer", "Accept", Active};
const Step hangup = {"Hangup", "Reject", Disconnected};
const Step hold = {"Hold", "SetHold", Held};
const Step resume = {"Resume", "SetHold", Active};
const Step tones = {"SendDtmf", "SendDTMF", 0};
const Step farEndAnswers = {"", "", Active};
const Step farEndEnds = {"", "", Disconnected};
const Step heldByItself = {"", "", Held};
const Step askToMute = {"", "", 0, Step::Mute};
const Step askToUnmute = {"", "", 0, Step::Unmute};
const Step askForRoute = {"", "", 0, Step::Route};
const Step showTheRest = {"", "", 0, Step::None, {dtmfInterface, audioInterface}};
const Step showAgain = {"", "", 0, Step::None, withAll};
// The host rejects such a call first and asks for the hold all the same.
const Step holdOfUnholdable = {"Hold", "SetHold", Disconnected};

const std::vector<CallScript> scripts = {
    {"missed", 20, Ringing, true, plain, {farEndEnds}},
    {"rejected", 10, Ringing, true, withAll, {hangup}},
    {"answered", 20, Ringing, true, withAudio, {answer, hangup}},
    {"answered, with tones", 10, Ringing, true, withTones, {answer, tones, tones, farEndEnds}},
    {"answered, held and resumed", 10, Ringing, true, withAll, {answer, hold, resume, hangup}},
    {"held by the application", 5, Dialing, true, plain, {farEndAnswers, heldByItself, farEndAnswers, farEndEnds}},
    {"dialled", 10, Dialing, false, withAll, {farEndAnswers, askToMute, tones, askToUnmute, hangup}},
    {"moved to other devices", 5, Dialing, true, withAudio, {askForRoute, farEndAnswers, askForRoute, farEndEnds}},
    {"hold of an unholdable call", 3, Ringing, false, plain, {answer, holdOfUnholdable}},
    {"interfaces one after the other", 4, Ringing, true, plain, {showTheRest, answer, tones, hangup}},
    {"announced twice", 3, Ringing, true, withAll, {showAgain, answer, hangup}},
};

} // namespace

const CallScript &CallScript::draw(std::mt19937 &random)
{
    static std::discrete_distribution<size_t> pick = [] {
        std::vector<int> weights;
        for (const CallScript &script : scripts)
            weights.push_back(script.weight);
        return std::discrete_distribution<size_t>(weights.begin(), weights.end());
    }();
    return scripts.at(pick(random));
}
