// SPDX-License-Identifier: MIT
#include "fleet/etcd/outcomes.h"

#include <algorithm>

namespace fleet {

namespace {

constexpr std::size_t kLongestLine = 300;

// etcd tells several troubles with one code and words of its own, which are part of its API
// (rpctypes/error.go).
struct Meaning {
    grpc::StatusCode code;
    const char *words; // empty: any
    Outcome outcome;
};

constexpr Meaning kMeanings[] = {
    {grpc::StatusCode::PERMISSION_DENIED, "", Outcome::Denied},
    {grpc::StatusCode::UNAUTHENTICATED, "", Outcome::Denied},
    {grpc::StatusCode::INVALID_ARGUMENT, "user name", Outcome::Denied},
    {grpc::StatusCode::INVALID_ARGUMENT, "authentication failed", Outcome::Denied},
    {grpc::StatusCode::FAILED_PRECONDITION, "user name", Outcome::Denied},
    {grpc::StatusCode::INVALID_ARGUMENT, "too large", Outcome::TooLarge},
    {grpc::StatusCode::INVALID_ARGUMENT, "too many operations", Outcome::TooLarge},
    {grpc::StatusCode::RESOURCE_EXHAUSTED, "database space", Outcome::NoSpace},
    {grpc::StatusCode::RESOURCE_EXHAUSTED, "larger than max", Outcome::TooLarge},
    {grpc::StatusCode::OUT_OF_RANGE, "compacted", Outcome::Compacted},
};

} // namespace

Outcome outcomeOf(const grpc::Status &status)
{
    if (status.ok())
        return Outcome::Done;
    const auto *found = std::find_if(std::begin(kMeanings), std::end(kMeanings), [&](const Meaning &meaning) {
        return meaning.code == status.error_code() &&
               status.error_message().find(meaning.words) != std::string::npos;
    });
    return found == std::end(kMeanings) ? Outcome::Unreachable : found->outcome;
}

std::string lineOf(const grpc::Status &status)
{
    std::string line = status.error_message().substr(0, kLongestLine);
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return c < ' ' || c == 0x7f; }, ' ');
    return line.empty() ? "gRPC status " + std::to_string(status.error_code()) : line;
}

} // namespace fleet
