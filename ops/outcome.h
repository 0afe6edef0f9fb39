// SPDX-License-Identifier: MIT
//
// A result or the reason why there is none. Nothing in ops/ throws; what can fail as part of its work
// returns one of these, and the caller looks.
#ifndef CORVEL_OPS_OUTCOME_H
#define CORVEL_OPS_OUTCOME_H

#include <QByteArray>

#include <utility>
#include <variant>

namespace ops {

struct Failure {
    // Input: what the user gave is wrong, and nothing was done. Store: the store or the system refused.
    enum Kind { Input, Store } kind = Input;
    QByteArray text; // one line for people, UTF-8, without a full stop
};

inline Failure wrong(const QByteArray &text)
{
    return {Failure::Input, text};
}

inline Failure refused(const QByteArray &text)
{
    return {Failure::Store, text};
}

template<class T>
class [[nodiscard]] Outcome {
public:
    Outcome(T value) : m_state(std::in_place_index<0>, std::move(value)) {}
    Outcome(Failure failure) : m_state(std::in_place_index<1>, std::move(failure)) {}

    explicit operator bool() const { return m_state.index() == 0; }
    // Only after the outcome tested true.
    T &operator*() { return *std::get_if<0>(&m_state); }
    const T &operator*() const { return *std::get_if<0>(&m_state); }
    T *operator->() { return std::get_if<0>(&m_state); }
    const T *operator->() const { return std::get_if<0>(&m_state); }
    // Only after it tested false.
    const Failure &failure() const { return *std::get_if<1>(&m_state); }

private:
    std::variant<T, Failure> m_state;
};

// For work that has no result of its own.
struct Done {};

} // namespace ops

#endif
