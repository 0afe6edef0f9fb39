#!/bin/sh
# SPDX-License-Identifier: MIT
#
# netpicture.sh PROGRAM: in a network namespace of its own, makes interfaces of every kind and compares what the
# program tells of them. PROGRAM prints one line per interface and route.
set -eu
show=$1

ip link set lo up
ip link add good type veth peer name peer
ip addr add 10.77.0.1/24 dev good
ip addr add 10.77.0.2/24 dev good
ip link set peer up
ip link set good up mtu 1400
ip link add off type bridge
ip link set off multicast off
ip addr add 10.78.0.1/24 dev off
ip link add alone type veth peer name unlinked
ip link set alone up
ip route add 239.0.0.0/8 dev good
ip route add unreachable 10.99.0.0/16

expected='alone: up=0 multicast=1 loopback=0 mtu=1500
good: up=1 multicast=1 loopback=0 mtu=1400 10.77.0.1 10.77.0.2
lo: up=1 multicast=1 loopback=1 mtu=65536 127.0.0.1
off: up=0 multicast=0 loopback=0 mtu=1500 10.78.0.1
peer: up=1 multicast=1 loopback=0 mtu=1500
unlinked: up=0 multicast=1 loopback=0 mtu=1500
239.1.1.1 routed
10.77.0.9 routed
10.99.0.1 not routed
8.8.8.8 not routed'
# A link comes up when the kernel's own work queue had its turn, so the last look counts.
tries=0
while [ $tries -lt 200 ]; do
    found=$("$show" 239.1.1.1 10.77.0.9 10.99.0.1 8.8.8.8)
    [ "$found" = "$expected" ] && exit 0
    tries=$((tries + 1))
done
printf 'expected:\n%s\n\nfound:\n%s\n' "$expected" "$found" >&2
exit 1
