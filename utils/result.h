#pragma once

#include <string>
#include <tl/expected.hpp>
#include <utility>

/// How a function says that it failed, outside the plug-in's prescribed signatures: it returns a value or an error.
namespace scribo {

/// Why something could not be done: one sentence for a person, in UTF-8, without a full stop at its end.
struct Error
{
    std::string message;
};

/// A value, or the reason why there is none. Result<void> says only whether something was done.
template <class T>
using Result = tl::expected<T, Error>;

/// What a function that returns a Result returns when it fails.
inline tl::unexpected<Error> failure(std::string message)
{
    return tl::unexpected<Error>(Error{std::move(message)});
}

} // namespace scribo
