// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_NAMES_H
#define KIT_CHECKER_NAMES_H

#include <string_view>

/** What is where on the wire. */
namespace Names {
constexpr std::string_view bus = "org.freedesktop.DBus";
constexpr std::string_view objectManager = "org.freedesktop.DBus.ObjectManager";
constexpr std::string_view properties = "org.freedesktop.DBus.Properties";
constexpr std::string_view introspectable = "org.freedesktop.DBus.Introspectable";
constexpr std::string_view service = "zelkovar.Call.Service1";
constexpr std::string_view serviceManager = "zelkovar.Call.ServiceManager1";
constexpr std::string_view call = "zelkovar.Call.Call1";
constexpr std::string_view tones = "zelkovar.Call.DTMF1";
constexpr std::string_view audio = "zelkovar.Call.AudioControl1";
constexpr std::string_view servicePath = "/zelkovar/call/service";
constexpr std::string_view reportType = "oa{sa{sv}}";
constexpr std::string_view snapshotType = "a{oa{sa{sv}}}";
constexpr std::string_view desktopHost = "org.tarnwickle.voicecall";
constexpr std::string_view desktopPath = "/org/tarnwickle/voicecall";
constexpr std::string_view desktopCall = "org.tarnwickle.voicecall.Call1";
} // namespace Names

#endif
