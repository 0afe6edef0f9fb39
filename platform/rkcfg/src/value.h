/* SPDX-License-Identifier: MIT */
/* What the store keeps: keys and values, as they pass through a call and as they are kept beyond it. */
#ifndef RKCFG_VALUE_H
#define RKCFG_VALUE_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace rkcfg {

enum class Type { Absent = 0, Text = 1, Number = 2 };

struct Key {
    const char *path;
    const char *name;
};

// A text is kept without its terminating zero. Its bytes belong to somebody else.
struct Value {
    Type type = Type::Text;
    std::string_view text;
    uint32_t number = 0;
};

inline bool operator==(const Value &a, const Value &b)
{
    return a.type == b.type && a.text == b.text && a.number == b.number;
}

// A value with its own bytes; absent at first.
struct Kept {
    Type type = Type::Absent;
    std::string text;
    uint32_t number = 0;

    Kept() = default;
    explicit Kept(const Value &value) : type(value.type), text(value.text), number(value.number) {}
    Value value() const { return {type, text, number}; }
};

using Reader = std::function<void(const Value &)>;
using Visitor = std::function<void(const Key &, const Value &)>;

} // namespace rkcfg

#endif // RKCFG_VALUE_H
