#pragma once

/// The tests of this folder run under inline and under deferred delivery (tests/support/DeliveryTest.h), but
/// for these. Under deferred delivery a change is told with the next turn, several changes of one reactor's
/// notifier are told as one, and a reactor that has missed several attributes hears of every one it watches.
///
/// Need inline delivery, by suite:
///
/// - SignalPerFrame: several signals within one turn are told as one, and one packet is read for it. A burst
///   leaves a lag that lasts.
/// - GoldenTimelines: configuring a host in one go counts as a change of everything, which runs the enable
///   sequence again and draws other delays.
/// - VersionsInline: the watcher of the version in force must hear of each value that stands for an instant.
/// - UnsolicitedInline: the order of two changes of a status decides; told together, they come in
///   the order of the callbacks.
/// - GroupTimerInline, MembershipInline: they look at the machine from inside a send, between two of its
///   steps, or remove there what it works on.
/// - LifecycleInline, BoundReactors: they look at the machine from inside a sequence, step by step, or call
///   the callbacks of reactors that they made.
/// - HostDirSmInline: a host that is replaced within one delivery keeps the old one's machine.
/// - HostOnItsOwnActivity: another activity than the default one holds notifications back.
/// - PeriodicSenderInline: the change of `continueUnsolicitedReport` is told before the interval that follows
///   it in the enable sequence.
/// - Reentry: deferred, nobody is told of anything inside a handler.
/// - the death tests: one delivery is enough to die under.
///
/// Need no delivery, because nothing in them is notified: V3GroupState, V3Record and the like,
/// V3GroupRecords, GroupReplication (its machines are in HostReplication).
///
/// End the process under deferred delivery, though not under inline, because an expiry is told before the
/// change that was made after it in the same turn (DeferredExpiryDeathTest):
///
/// - a host that is disabled in the turn in which a group timer of its expires: "igmpHost()->enabled()".
/// - a group that is removed in the turn in which its timer expires: "igmpHost()->v3group( group )".
