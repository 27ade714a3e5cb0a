#!/usr/bin/perl
# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

# One incoming call: ringlet-example-perl [ADDRESS [NAME [BUS-NAME-OF-THE-HOST]]]. Ctrl-C is the far end hanging up.

use strict;
use warnings;

use Net::DBus qw(:typing);
use Net::DBus::Binding::Message;
use Net::DBus::Reactor;

my $MANAGER_PATH   = '/ringlet/example';
my $CALL_PATH      = "$MANAGER_PATH/call1";
my $SERVICE_PATH   = '/zelkovar/call/service';
my $OBJECT_MANAGER = 'org.freedesktop.DBus.ObjectManager';
my @INTERFACES     = map { "zelkovar.Call.$_" } qw(Call1 DTMF1 AudioControl1);
my ($NOT_YET, $ENDED, $INCOMING, $ACTIVE, $HELD) = (0, 1, 3, 5, 7);

my ($address, $name, $host_name) = @ARGV;
$address   //= 'sip:caller@example.org';
$name      //= 'Caller';
$host_name //= 'org.tarnwickle.voicecall';

my $bus        = Net::DBus->session;                           # which ends the program when the bus goes
my $connection = $bus->get_connection;
my $host       = '';                                           # the connection that has the host's name
my $status     = $NOT_YET;

$| = 1;

# --- What the host is told. The library guesses types from values; an empty dictionary has none to guess from.

my $PROPERTIES = [&Net::DBus::Binding::Message::TYPE_DICT_ENTRY,
    [&Net::DBus::Binding::Message::TYPE_STRING, [&Net::DBus::Binding::Message::TYPE_VARIANT]]];
my $OBJECT = [&Net::DBus::Binding::Message::TYPE_DICT_ENTRY, [&Net::DBus::Binding::Message::TYPE_STRING, $PROPERTIES]];
my $OBJECTS = [&Net::DBus::Binding::Message::TYPE_DICT_ENTRY,
    [&Net::DBus::Binding::Message::TYPE_OBJECT_PATH, $OBJECT]];

sub call_object {
    my %properties = (
        Incoming   => dbus_boolean(1),
        Status     => dbus_uint32($status),
        Holdable   => dbus_boolean(1),
        RemoteName => dbus_string($name),
        Uri        => dbus_string($address),
    );
    return {$INTERFACES[0] => \%properties, $INTERFACES[1] => {}, $INTERFACES[2] => {}};
}

sub emit {
    my ($path, $interface, $member, @typed_values) = @_;
    my $signal   = $connection->make_signal_message($path, $interface, $member);
    my $iterator = $signal->iterator(1);
    $iterator->append(@$_) for @typed_values;
    $connection->send($signal);
}

sub emit_status {
    emit($CALL_PATH, $INTERFACES[0], 'StatusChanged', [dbus_uint32($status)]);
}

sub ring {
    $status = $INCOMING;
    emit($MANAGER_PATH, $OBJECT_MANAGER, 'InterfacesAdded', [dbus_object_path($CALL_PATH)], [call_object(), $OBJECT]);
}

sub change_status {
    my ($from, $to) = @_;
    return if $status != $from;
    $status = $to;
    emit_status();
}

# The final status goes first: behind the removal nobody listens.
sub end_call {
    return if $status <= $ENDED;
    $status = $ENDED;
    emit_status();
    emit($MANAGER_PATH, $OBJECT_MANAGER, 'InterfacesRemoved', [dbus_object_path($CALL_PATH)], [\@INTERFACES]);
}

# --- What the host commands. The library's objects do not learn who calls: messages are handled here.

my %COMMANDS = (
    "$INTERFACES[0].Accept"  => ['', sub { change_status($INCOMING, $ACTIVE) }],
    "$INTERFACES[0].Reject"  => ['u', \&end_call],
    "$INTERFACES[0].SetHold" => ['b', sub { $_[0] ? change_status($ACTIVE, $HELD) : change_status($HELD, $ACTIVE) }],
    "$INTERFACES[1].SendDTMF"              => ['s',                    sub { }],
    "$INTERFACES[2].UpdateAudioRouteState" => ['a(sibbsa{sv})bss',     sub { }],
    "$INTERFACES[2].UpdateAudioRoute"      => ['bss',                  sub { }],
);

sub plain { join ' ', map { ref eq 'ARRAY' ? plain(@$_) : ref eq 'HASH' ? plain(%$_) : $_ } @_ }

# Anybody on the bus can send a command; only the host is obeyed.
sub reply_to_command {
    my ($message, $signature, $obey) = @_;
    my $error = $message->get_sender ne $host ? 'AccessDenied' : $message->get_signature ne $signature ? 'InvalidArgs' : '';
    return $connection->make_error_message($message, "org.freedesktop.DBus.Error.$error", 'not from the host, or not of these types')
        if $error;
    my @values = $message->get_args_list;
    print plain($message->get_member, @values), "\n";
    $obey->(@values);
    return $connection->make_method_return_message($message);
}

sub managed_objects {
    my $reply = $connection->make_method_return_message(shift);
    $reply->iterator(1)->append($status > $ENDED ? {$CALL_PATH => call_object()} : {}, $OBJECTS);
    return $reply;
}

# What is not answered here, the library answers with an error.
sub on_call {
    my $message = shift;
    my $member  = ($message->get_interface // '') . '.' . $message->get_member;
    if ($message->get_path eq $MANAGER_PATH && $member eq "$OBJECT_MANAGER.GetManagedObjects") {
        $connection->send(managed_objects($message));
    } elsif ($message->get_path eq $CALL_PATH && $status > $ENDED && exists $COMMANDS{$member}) {
        $connection->send(reply_to_command($message, @{$COMMANDS{$member}}));
    } else {
        return 0;
    }
    return 1;
}

# --- The host

# Only when it is registered may the call be announced. Before, it would be reported twice: by its announcement,
# and in the answer to GetManagedObjects. A call that is up already is told by that answer.
sub set_host {
    $host = shift // '';
    return if $host eq '';
    my $request = $connection->make_method_call_message($host, $SERVICE_PATH, 'zelkovar.Call.Service1',
        'RegisterCallManager');
    $request->iterator(1)->append(dbus_object_path($MANAGER_PATH));
    my $pending = $connection->send_with_reply($request, 25000);
    $pending->set_notify(sub {
        ring() if ref $pending->get_reply eq 'Net::DBus::Binding::Message::MethodReturn' && $status == $NOT_YET;
    });
}

# The host shows the call, and only since then listens to its status: tell it again if it has changed.
sub on_shown {
    my ($application, $path, $interfaces) = @_;
    my $shown = ($interfaces->{$INTERFACES[0]} // {})->{Status};
    emit_status() if $path eq $CALL_PATH && $status > $ENDED && defined $shown && $shown ne $status;
}

$connection->add_filter(sub {
    my (undef, $message) = @_;
    my $type = $message->get_type;
    return on_call($message) if $type == &Net::DBus::Binding::Message::MESSAGE_TYPE_METHOD_CALL;
    on_shown($message->get_args_list)
        if ($message->get_member // '') eq 'InterfacesAdded' && $message->get_signature eq 'soa{sa{sv}}'
        && $type == &Net::DBus::Binding::Message::MESSAGE_TYPE_SIGNAL && $message->get_sender eq $host;
    return 0;
});
$bus->get_bus_object->connect_to_signal('NameOwnerChanged', sub {
    my ($changed, undef, $owner) = @_;
    set_host($owner) if $changed eq $host_name;
});
$connection->add_match("path='$SERVICE_PATH',member='InterfacesAdded',arg0='" . $bus->get_unique_name . "'");
set_host($bus->get_service_owner($host_name));

my $reactor = Net::DBus::Reactor->main;
$SIG{INT} = sub { $reactor->shutdown };
$reactor->run;
end_call();
$connection->flush;
