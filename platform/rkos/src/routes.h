// SPDX-License-Identifier: MIT
//
// Which interface the default route leaves by.
#ifndef RKOS_ROUTES_H
#define RKOS_ROUTES_H

#include <istream>
#include <string>

namespace rkos {

// `table`: the text of /proc/net/route. Returns the interface of the default route that is up and
// has the lowest metric; empty when there is none.
std::string defaultRouteInterface(std::istream &table);

} // namespace rkos

#endif // RKOS_ROUTES_H
