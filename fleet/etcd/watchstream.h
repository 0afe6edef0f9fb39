// SPDX-License-Identifier: MIT
//
// One watch: a stream to one member, read by a thread of its own. Private to fleet/etcd.
#ifndef CORVEL_FLEET_ETCD_WATCHSTREAM_H
#define CORVEL_FLEET_ETCD_WATCHSTREAM_H

#include "fleet/etcd/members.h"

#include "etcd.grpc.pb.h"

#include <thread>

namespace fleet {

// A watch can be dead while its connection lives: no event, no error, for minutes. So it is asked for a sign
// of life when it has been silent, and given up when none comes.
class WatchStream : public Watch {
public:
    WatchStream(std::shared_ptr<Members> members, const EtcdOptions &options,
                etcdserverpb::WatchCreateRequest what, WatchSink *sink);
    ~WatchStream() override; // not from within a call of the sink

private:
    enum Tag : std::intptr_t { Started = 1, Written, Answer, Finished };

    void run();
    bool step();
    bool silent();
    bool happened(Tag tag, bool ok);
    bool answered();
    bool give();
    void write(const etcdserverpb::WatchRequest &request);
    void end(WatchSink::End why, const std::string &reason);
    void broken();
    void drain();

    std::shared_ptr<Members> m_members;
    const std::size_t m_member;
    const int m_createdMs, m_silenceMs;
    etcdserverpb::WatchCreateRequest m_what;
    WatchSink *m_sink;

    grpc::ClientContext m_context;
    grpc::CompletionQueue m_queue;
    std::unique_ptr<etcdserverpb::Watch::Stub> m_stub;
    std::unique_ptr<grpc::ClientAsyncReaderWriter<etcdserverpb::WatchRequest, etcdserverpb::WatchResponse>>
        m_stream;
    etcdserverpb::WatchResponse m_answer;
    std::vector<Entry> m_entries; // of a transaction that comes in pieces
    bool m_created = false;
    int m_silentFor = 0; // in steps of a third of the time
    int m_pending = 0;   // operations that the queue still owes an answer
    bool m_writing = false;
    std::atomic<bool> m_stopping{false};
    std::thread m_thread; // last: starts when everything above is there
};

} // namespace fleet

#endif
