// SPDX-License-Identifier: MIT
#include "routes.h"

#include <net/route.h>
#include <sstream>

namespace rkos {

namespace {

struct Route {
    std::string interface;
    unsigned long destination = 0;
    unsigned long mask = 0;
    unsigned flags = 0;
    unsigned metric = 0;
};

bool parse(const std::string &line, Route *route)
{
    std::istringstream fields(line);
    std::string gateway;
    unsigned references = 0;
    unsigned uses = 0;
    fields >> route->interface >> std::hex >> route->destination >> gateway >> route->flags;
    fields >> std::dec >> references >> uses >> route->metric >> std::hex >> route->mask;
    return !fields.fail();
}

} // namespace

std::string defaultRouteInterface(std::istream &table)
{
    std::string best;
    unsigned bestMetric = 0;
    for (std::string line; std::getline(table, line);) {
        Route route;
        if (!parse(line, &route) || route.destination != 0 || route.mask != 0)
            continue;
        if ((route.flags & RTF_UP) == 0 || (route.flags & RTF_REJECT) != 0)
            continue;
        if (best.empty() || route.metric < bestMetric) {
            best = route.interface;
            bestMetric = route.metric;
        }
    }
    return best;
}

} // namespace rkos
