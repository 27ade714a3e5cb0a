# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Mistakes in the properties of a call, and what is too heavy."""

import os

from application import CALL, MANAGER, Application, plain
from gi.repository import Gio, GLib


class Properties(Application):
    stays = True

    def properties(self):
        found = super().properties()
        self.spoil(found)
        return found


def changed(name, rule, text, **values):
    """An application whose properties are these, None for one that is not there."""

    def spoil(_self, found):
        for key, value in values.items():
            found.pop(key, None)
            if value is not None:
                found[key] = value

    return type(name, (Properties,), {"__doc__": text, "rule": rule, "why": rule, "spoil": spoil})


MADE = [
    changed("NoStatus", "property-missing", "reports no Status", Status=None),
    changed("NoProperties", "property-missing", "reports no properties at all", Status=None, Incoming=None, Uri=None,
            RemoteName=None, Holdable=None),
    changed("NobodyCalls", "property-missing", "reports neither RemoteName nor Uri", RemoteName=None, Uri=None),
    changed("NoDirection", "property-missing", "rings without Incoming", Incoming=None),
    changed("SmallStatus", "property-misspelt", "writes status", Status=None, status=plain(3, "u")),
    changed("ShortName", "property-misspelt", "writes RemoteNam", RemoteName=None, RemoteNam=plain("Ann")),
    changed("LargeUri", "property-misspelt", "writes URI", Uri=None, URI=plain("sip:ann@example.org")),
    changed("Incomming", "property-misspelt", "writes Incomming", Incoming=None, Incomming=plain(True, "b")),
    changed("SignedStatus", "property-type", "sends Status as i", Status=plain(3, "i")),
    changed("WordForStatus", "property-type", "sends Status as a word", Status=plain("incoming")),
    changed("ByteForStatus", "property-type", "sends Status as a byte", Status=plain(3, "y")),
    changed("WideStatus", "property-type", "sends Status as t", Status=plain(3, "t")),
    changed("WordForDirection", "property-type", "sends Incoming as a word", Incoming=plain("yes")),
    changed("NumberForDirection", "property-type", "sends Incoming as a number", Incoming=plain(1, "u")),
    changed("SignedHoldable", "property-type", "sends Holdable as i", Holdable=plain(1, "i")),
    changed("ListOfNames", "property-type", "sends RemoteName as a list", RemoteName=plain(["Ann", "Example"], "as")),
    changed("PathForUri", "property-type", "sends Uri as an object path", Uri=plain("/ann", "o")),
    changed("BytesForName", "property-type", "sends RemoteName as bytes", RemoteName=plain(b"Ann", "ay")),
    changed("NestedStatus", "property-nested-variant", "wraps Status twice", Status=plain(plain(3, "u"), "v")),
    changed("NestedUri", "property-nested-variant", "wraps Uri twice", Uri=plain(plain("sip:a@example.org"), "v")),
    changed("NestedDirection", "property-nested-variant", "wraps Incoming twice", Incoming=plain(plain(True, "b"), "v")),
    changed("UnknownStatus", "status-unknown", "rings with status 9", Status=plain(9, "u")),
]


class RenamesItsCaller(Application):
    """changes RemoteName by PropertiesChanged"""
    rule = "property-change-unheard"
    property, value = "RemoteName", plain("Ann")

    def answered(self):
        self.emit(self.call, "org.freedesktop.DBus.Properties", "PropertiesChanged", "(sa{sv}as)",
                  (CALL, {self.property: self.value}, []))
        super().answered()


class ChangesItsAddress(RenamesItsCaller):
    """changes Uri by PropertiesChanged"""
    property, value = "Uri", plain("sip:other@example.org")


class LongName(Application):
    """has a name of a hundred thousand letters"""
    rule = "large-message"

    def properties(self):
        return {**super().properties(), "RemoteName": plain("x" * 100000)}


class Flood(Application):
    """sends four hundred signals at once"""
    rule = "flood"

    def answered(self):
        for _ in range(200):
            self.tell(7)
            self.tell(5)
        self.after(100, super().answered)


class Descriptor(Application):
    """sends a file descriptor in its properties"""
    rule = "descriptor-in-property"

    def announce(self, path):
        message = Gio.DBusMessage.new_signal(self.path, MANAGER, "InterfacesAdded")
        files = Gio.UnixFDList.new()
        with open(os.devnull, encoding="utf-8") as file:
            files.append(file.fileno())
        photo = {"org.example.Contact1": {"Photo": plain(0, "h")}}
        message.set_unix_fd_list(files)
        message.set_body(GLib.Variant("(oa{sa{sv}})", (path, {**self.objects[path], **photo})))
        self.bus.send_message(message, Gio.DBusSendMessageFlags.NONE)
