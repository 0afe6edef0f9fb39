// SPDX-License-Identifier: MIT
#include "ops/draft.h"

namespace ops {

namespace {

std::optional<Value> stored(const Snapshot &base, const QByteArray &path, const QByteArray &name)
{
    const Value *value = base.find(path, name);
    return value ? std::optional<Value>(*value) : std::nullopt;
}

} // namespace

void Draft::set(const QByteArray &path, const QByteArray &name, const Value &value)
{
    m_set[{path, name}] = value;
}

void Draft::remove(const QByteArray &path, const QByteArray &name)
{
    m_set[{path, name}] = std::nullopt;
}

std::optional<Value> Draft::find(const QByteArray &path, const QByteArray &name) const
{
    const auto at = m_set.find({path, name});
    return at != m_set.end() ? at->second : stored(m_base, path, name);
}

quint32 Draft::number(const QByteArray &path, const QByteArray &name) const
{
    const std::optional<Value> value = find(path, name);
    return value && !value->isText ? value->number : 0;
}

Changes Draft::changes() const
{
    Changes changes;
    for (const auto &[key, after] : m_set) {
        const std::optional<Value> before = stored(m_base, key.first, key.second);
        if (before != after)
            changes.push_back({key.first, key.second, before, after});
    }
    return changes;
}

} // namespace ops
