// SPDX-License-Identifier: MIT
//
// QLineAddress: an IPv4 address typed octet by octet.
#ifndef CORVEL_LINEADDRESS_H
#define CORVEL_LINEADDRESS_H
#endif
