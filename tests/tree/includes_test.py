# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

import os
import pathlib
import unittest

from includes import violations
from maketree import made_tree

# A small tree that is in order; each test below adds one file to it.
GOOD = {
    "src/plugin/factory.cpp": '#include "factory.h"\n#include "service/service.h"\n#include "calls/handler.h"\n'
                              '#include "objectmanager/mirror.h"\n#include "common/trace.h"\n#include <QtCore/QHash>\n',
    "src/plugin/factory.h": '#include "common/trace.h"\n',
    "src/service/service.h": '#include "callserviceadaptor.h"\n#include "callservicemanageradaptor.h"\n',
    "src/calls/handler.h": '#include "audiocontrolproxy.h"\n#include "callproxy.h"\n#include "dtmfproxy.h"\n',
    "src/calls/handler.cpp": '#include "calls/handler.h"\n#include "handler.moc"\n',
    "src/objectmanager/mirror.h": '#include "dbusobjectmanagerproxy.h"\n',
    "src/audio/callhandleraudio.cpp": '#include "calls/handler.h"\n',
    "src/common/trace.h": "#include <host.h>\n",
    "platform/voicecall/host.h": "#include <QtCore/QObject>\n",
    "desktop/voicecalld/host.cpp": "#include <host.h>\n",
    "kit/client/RingletClient/call.h": "#include <RingletClient/call.h>\n",
    "kit/client/callobject.h": '#include <RingletClient/call.h>\n#include "busserver/tree.h"\n',
    "busserver/tree.h": "#include <QtCore/QObject>\n",
    "kit/examples/phone/main.cpp": '#include "programs/stop.h"\n#include <RingletClient/call.h>\n',
    "kit/checker/analysis/message.h": "",
    "kit/checker/capture/reader.h": '#include "analysis/message.h"\n',
    "kit/checker/commands/main.cpp": '#include "analysis/message.h"\n#include "capture/reader.h"\n',
    "kit/simulator/simulator.h": "",
    "kit/simulator/simulator.cpp": '#include "simulator.h"\n#include "callserviceadaptor.h"\n',
    "programs/stop.h": "",
    "bench/subject/bare.cpp": '#include "common/trace.h"\n#include <host.h>\n',
    "tests/unit/test.cpp": '#include "calls/handler.h"\n',
}


class TreeTest(unittest.TestCase):
    def test_includes(self):
        self.assertEqual(list(violations(pathlib.Path(os.environ["SOURCE"]))), [])


class CheckerTest(unittest.TestCase):
    def assert_only_violation(self, path, include):
        with made_tree({**GOOD, path: f"#  include {include}\n"}) as root:
            found = list(violations(root))
        self.assertEqual(len(found), 1, found)
        self.assertTrue(found[0].startswith(path + ": "), found)

    def test_tree_in_order_is_accepted(self):
        with made_tree(GOOD) as root:
            self.assertEqual(list(violations(root)), [])

    def test_lower_layer_may_not_include_a_higher_one(self):
        self.assert_only_violation("src/common/bad.h", '"calls/handler.h"')
        self.assert_only_violation("src/objectmanager/bad.cpp", '"service/service.h"')
        self.assert_only_violation("src/calls/bad.cpp", '"plugin/factory.h"')

    def test_folders_of_one_layer_may_not_include_each_other(self):
        self.assert_only_violation("src/service/bad.cpp", '"calls/handler.h"')
        self.assert_only_violation("src/audio/bad.cpp", '"objectmanager/mirror.h"')

    def test_audio_may_include_calls_in_one_file_only(self):
        self.assert_only_violation("src/audio/bad.cpp", '"calls/handler.h"')

    def test_generated_headers_belong_to_their_folders(self):
        self.assert_only_violation("src/common/bad.h", '"callproxy.h"')
        self.assert_only_violation("src/audio/bad.cpp", '"dtmfproxy.h"')
        self.assert_only_violation("src/service/bad.h", '"callproxy.h"')
        self.assert_only_violation("src/calls/bad.h", '"callservicemanageradaptor.h"')
        self.assert_only_violation("src/common/bad.h", '"audiocontrolproxy.h"')
        self.assert_only_violation("src/common/bad.h", '"dbusobjectmanagerproxy.h"')

    def test_header_of_unknown_origin_is_reported(self):
        self.assert_only_violation("src/calls/bad.cpp", '"newproxy.h"')

    def test_folder_of_unknown_layer_is_reported(self):
        self.assert_only_violation("src/misc/bad.cpp", "<QtCore/QObject>")

    def test_bus_server_may_include_nothing_else(self):
        self.assert_only_violation("busserver/bad.h", "<host.h>")
        self.assert_only_violation("busserver/bad.cpp", '"kit/simulator/simulator.h"')

    def test_client_headers_may_not_include_the_bus_server(self):
        self.assert_only_violation("kit/client/RingletClient/bad.h", '"busserver/tree.h"')

    def test_desktop_may_not_include_plugin_or_kit(self):
        self.assert_only_violation("desktop/voicecalld/bad.cpp", '"common/trace.h"')
        self.assert_only_violation("desktop/voicecalld/bad.cpp", '"../../src/calls/handler.h"')
        self.assert_only_violation("desktop/callctl/bad.cpp", "<simulator.h>")

    def test_kit_may_include_nothing_else_of_the_tree(self):
        self.assert_only_violation("kit/simulator/bad.cpp", '"calls/handler.h"')
        self.assert_only_violation("kit/simulator/bad.c", "<host.h>")
        self.assert_only_violation("kit/simulator/bad.cpp", '"../../platform/voicecall/host.h"')

    def test_kit_may_not_reach_into_the_client_library(self):
        self.assert_only_violation("kit/simulator/bad.cpp", '"../client/callobject.h"')
        self.assert_only_violation("kit/examples/phone/bad.cpp", '"callobject.h"')
        self.assert_only_violation("kit/client/RingletClient/bad.h", '"callobject.h"')

    def test_analysis_of_the_checker_stays_without_files(self):
        self.assert_only_violation("kit/checker/analysis/bad.cpp", '"capture/reader.h"')
        self.assert_only_violation("kit/checker/rules/bad.cpp", '"capture/reader.h"')

    def test_programs_of_the_kit_may_not_include_each_other(self):
        self.assert_only_violation("kit/examples/phone/bad.cpp", '"../../simulator/simulator.h"')
        self.assert_only_violation("programs/bad.h", '"simulator.h"')

    def test_platform_may_include_nothing_else_of_the_tree(self):
        self.assert_only_violation("platform/voicecall/bad.h", '"common/trace.h"')
        self.assert_only_violation("platform/voicecall/bad.h", '"simulator.h"')


if __name__ == "__main__":
    unittest.main()
