#pragma once
// Functions that the module calls.

namespace hostkit {

template <typename Function, Function function, auto... failure>
struct Frame;

template <typename Result, typename... Arguments, Result (*function)(Arguments...), auto... failure>
struct Frame<Result (*)(Arguments...), function, failure...> {
    static Result Call(Arguments... arguments) noexcept {
        try {
            return function(arguments...);
        } catch (...) {
            return Result(failure...);
        }
    }
};

/// A function in a frame that no exception leaves, since the module's frames know of none: they
/// would not be unwound. What is raised, want of memory above all, becomes `failure` as the
/// result, or the zero of its type.
template <typename Function, Function function, auto... failure>
constexpr Function framed = Frame<Function, function, failure...>::Call;

}  // namespace hostkit
