// SPDX-License-Identifier: MIT
//
// A cluster that answers as it is told to, and counts.
#ifndef TESTS_FLEET_MEMBER_H
#define TESTS_FLEET_MEMBER_H

#include "fleet/etcd/etcdcluster.h"

#include <map>

namespace fleet {

class Member : public EtcdCluster {
public:
    struct Watched {
        std::string prefix;
        std::int64_t from;
        WatchSink *sink;
    };

    Outcome answer = Outcome::Done;
    std::map<std::string, std::string> values;
    int calls = 0;
    std::vector<Watched> watches; // also those that are over

    void clear()
    {
        answer = Outcome::Done;
        values.clear();
        calls = 0;
        watches.clear();
    }
    Outcome range(const std::string &, Range *) override { return called(); }
    Outcome get(const std::string &key, Range *range) override
    {
        *range = Range();
        if (values.count(key) > 0)
            range->entries.push_back({key, values.at(key), 1, false});
        return called();
    }
    Outcome keys(const std::string &prefix, std::vector<std::string> *keys) override
    {
        keys->clear();
        for (const auto &value : values) {
            if (value.first.compare(0, prefix.size(), prefix) == 0)
                keys->push_back(value.first);
        }
        return called();
    }
    Outcome names(const std::string &, Range *) override { return called(); }
    Outcome getAll(const std::vector<std::string> &, Range *) override { return called(); }
    Outcome commit(const std::vector<Put> &, std::int64_t *) override { return called(); }
    std::unique_ptr<Watch> watch(const std::string &prefix, std::int64_t from, WatchSink *sink) override
    {
        watches.push_back({prefix, from, sink});
        return std::make_unique<Watch>();
    }
    Outcome keepAlive(const std::string &, const std::string &, int) override { return called(); }
    Outcome endLease() override { return called(); }
    bool cutOff() const override { return false; }
    std::string reason() const override { return "no answer"; }

private:
    Outcome called()
    {
        ++calls;
        return answer;
    }
};

} // namespace fleet

#endif
