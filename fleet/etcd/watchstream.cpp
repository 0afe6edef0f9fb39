// SPDX-License-Identifier: MIT
#include "fleet/etcd/watchstream.h"

#include "fleet/etcd/outcomes.h"

#include <chrono>

namespace fleet {

namespace {

constexpr int kSigns = 3; // a sign of life is asked for after a third of the silence that ends a watch

void *tagOf(std::intptr_t tag)
{
    return reinterpret_cast<void *>(tag); // NOLINT(performance-no-int-to-ptr): the queue's interface
}

WatchSink::End endOf(Outcome outcome)
{
    if (outcome == Outcome::Denied)
        return WatchSink::End::Denied;
    return outcome == Outcome::Compacted ? WatchSink::End::Compacted : WatchSink::End::Gone;
}

} // namespace

WatchStream::WatchStream(std::shared_ptr<Members> members, const EtcdOptions &options,
                         etcdserverpb::WatchCreateRequest what, WatchSink *sink)
    : m_members(std::move(members)), m_member(m_members->current()), m_createdMs(options.watchCreatedMs),
      m_silenceMs(options.watchSilenceMs), m_what(std::move(what)), m_sink(sink),
      m_stub(etcdserverpb::Watch::NewStub(m_members->channel(m_member))), m_thread([this] { run(); })
{
}

WatchStream::~WatchStream()
{
    m_stopping = true;
    m_context.TryCancel();
    m_thread.join();
}

void WatchStream::run()
{
    m_context.set_wait_for_ready(true);
    m_context.AddMetadata("hasleader", "true");
    m_stream = m_stub->AsyncWatch(&m_context, &m_queue, tagOf(Started));
    ++m_pending;
    while (step()) {
    }
    m_context.TryCancel();
    drain();
    m_queue.Shutdown();
    void *tag = nullptr;
    bool ok = false;
    while (m_queue.Next(&tag, &ok)) {
    }
}

// One answer of the queue, or the end of a stretch of silence. False when the watch is over.
bool WatchStream::step()
{
    void *tag = nullptr;
    bool ok = false;
    const int patience = m_created ? m_silenceMs / kSigns : m_createdMs;
    const auto until = std::chrono::system_clock::now() + std::chrono::milliseconds(patience);
    switch (m_queue.AsyncNext(&tag, &ok, until)) {
    case grpc::CompletionQueue::TIMEOUT:
        return silent();
    case grpc::CompletionQueue::GOT_EVENT:
        --m_pending;
        return happened(static_cast<Tag>(reinterpret_cast<std::intptr_t>(tag)), ok);
    case grpc::CompletionQueue::SHUTDOWN:
        break;
    }
    return false;
}

bool WatchStream::silent()
{
    if (!m_created || ++m_silentFor >= kSigns) {
        m_members->failed(m_member);
        end(WatchSink::End::Gone, m_created ? "the watch gave no sign of life" : "no watch in time");
        return false;
    }
    etcdserverpb::WatchRequest request;
    request.mutable_progress_request();
    if (!m_writing)
        write(request);
    return true;
}

bool WatchStream::happened(Tag tag, bool ok)
{
    if (tag == Written)
        m_writing = false;
    if (!ok) {
        broken();
        return false;
    }
    if (tag == Written)
        return true;
    if (tag == Answer && !answered())
        return false;
    if (tag == Started) {
        etcdserverpb::WatchRequest request;
        *request.mutable_create_request() = m_what;
        write(request);
    }
    m_stream->Read(&m_answer, tagOf(Answer));
    ++m_pending;
    return true;
}

// The stream is over; its status says why.
void WatchStream::broken()
{
    grpc::Status status;
    m_stream->Finish(&status, tagOf(Finished));
    ++m_pending;
    drain();
    if (m_stopping)
        return;
    m_members->failed(m_member);
    end(endOf(outcomeOf(status)), lineOf(status));
}

void WatchStream::write(const etcdserverpb::WatchRequest &request)
{
    m_writing = true;
    ++m_pending;
    m_stream->Write(request, tagOf(Written));
}

bool WatchStream::answered()
{
    m_silentFor = 0;
    if (m_answer.canceled() || m_answer.compact_revision() > 0) {
        const bool compacted = m_answer.compact_revision() > 0;
        const bool denied = m_answer.cancel_reason().find("permission denied") != std::string::npos;
        end(compacted ? WatchSink::End::Compacted
            : denied  ? WatchSink::End::Denied
                      : WatchSink::End::Gone,
            compacted ? "the revision is no longer kept" : m_answer.cancel_reason());
        return false;
    }
    if (m_answer.created() && !m_created) {
        m_created = true;
        if (!m_stopping)
            m_sink->watching();
    }
    return give();
}

bool WatchStream::give()
{
    for (auto &event : *m_answer.mutable_events()) {
        Entry entry;
        entry.key = std::move(*event.mutable_kv()->mutable_key());
        entry.value = std::move(*event.mutable_kv()->mutable_value());
        entry.modRevision = event.kv().mod_revision();
        entry.deleted = event.type() == etcdserverpb::Event::DELETE;
        m_entries.push_back(std::move(entry));
    }
    if (m_answer.fragment() || m_entries.empty() || m_stopping)
        return true;
    const std::int64_t revision = m_entries.back().modRevision;
    m_sink->events(m_entries, revision);
    m_entries.clear();
    return true;
}

void WatchStream::end(WatchSink::End why, const std::string &reason)
{
    if (!m_stopping)
        m_sink->lost(why, reason);
}

// Every operation has to come back before its buffers may go.
void WatchStream::drain()
{
    void *tag = nullptr;
    bool ok = false;
    for (; m_pending > 0; --m_pending)
        m_queue.Next(&tag, &ok);
}

} // namespace fleet
