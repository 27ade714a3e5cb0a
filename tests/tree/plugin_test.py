# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""The built plug-in as a file, and as a host finds it when it loads it."""

import json
import os
import re
import subprocess
import unittest

PLUGIN = os.environ["PLUGIN"]


def output(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def symbols(file, which):
    """Names of dynamic symbols, without versions; weak ones that are undefined need no definition."""
    lines = [line.split() for line in output(os.environ["NM"], "--dynamic", which, file).splitlines()]
    return {fields[-1].split("@")[0] for fields in lines if fields[-2] not in {"w", "v"}}


def needed_libraries():
    """Files of the libraries that the plug-in itself names, as the dynamic linker finds them."""
    dynamic = output(os.environ["READELF"], "--wide", "--dynamic", PLUGIN)
    names = {line.split("[")[1].split("]")[0] for line in dynamic.splitlines() if "(NEEDED)" in line}
    found = {fields[0]: fields[2] for fields in map(str.split, output("ldd", PLUGIN).splitlines()) if "=>" in fields}
    return {name: found[name] for name in names if name in found}


def probe():
    return json.loads(output(os.environ["PROBE"], PLUGIN))


class PluginTest(unittest.TestCase):
    maxDiff = None

    def testExportsOnlyTheEntryPointsOfQt(self):
        self.assertEqual(symbols(PLUGIN, "--defined-only"), {"qt_plugin_instance", "qt_plugin_query_metadata"})

    def testRegistersMarshallersOfItsOwnTypesAlone(self):
        names = output(os.environ["NM"], "--demangle", PLUGIN)
        own = set(re.findall(r"void qDBusMarshallHelper<(.*?) ?>\(QDBusArgument", names))
        self.assertEqual(own, {"DBusObject", "QList<DBusObject>", "QMap<QString, QMap<QString, QVariant> >",
                               "QMap<QDBusObjectPath, QMap<QString, QMap<QString, QVariant> > >"})

    def testFindsEverySymbolInTheLibrariesItNames(self):
        libraries = needed_libraries()
        self.assertIn("libvoicecall.so.1", libraries)
        given = set().union(*(symbols(file, "--defined-only") for file in libraries.values()))
        undefined = symbols(PLUGIN, "--undefined-only")
        self.assertGreater(len(undefined), 10)
        self.assertEqual(sorted(undefined - given), [])

    def testHasTheMetadataThatHostsRead(self):
        record = probe()["metaData"]
        major, minor = map(int, os.environ["QT_VERSION"].split(".")[:2])
        # The loader knows the version without its last part.
        self.assertEqual(record.pop("version") & 0xffff00, major << 16 | minor << 8)
        self.assertEqual(record.pop("MetaData", {}), {})
        # Newer versions of Qt record the processor's features, too.
        record.pop("archreq", None)
        self.assertEqual(record, {"IID": "org.tarnwickle.voicecall.ringlet", "className": "CallProviderFactory",
                                  "debug": os.environ["DEBUG"] == "1"})

    def testLoadsWithoutAnApplicationObject(self):
        found = probe()
        self.assertFalse(found["loadedByLooking"])
        self.assertTrue(found["loadedWithoutApplication"])

    def testGivesANewObjectAfterTheFirstWasDeleted(self):
        instance = {"className": "CallProviderFactory", "hostInterface": True}
        found = probe()
        self.assertEqual(found["instances"], [instance, instance])
        self.assertNotIn("hadTwoInstances", found, "while the first is there, it is given again")

    def testLeavesTheProcessSoundWhenUnloaded(self):
        found = probe()
        self.assertTrue(found["unloaded"])
        self.assertEqual(found["typesAfterwards"].get("AudioDeviceList"), "a(sibbsa{sv})")
        self.assertEqual(found["typesAfterwards"].get("QVariantMapMap"), "a{sa{sv}}")


if __name__ == "__main__":
    unittest.main()
