#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace kelvo {

template <typename Signature>
class Call;

/// A function, or none, as an object of the platform's runtime keeps it and is given it: that describes its objects'
/// members and arguments, which it cannot where one holds a pointer to a member, as std::function does.
template <typename Result, typename... Arguments>
class Call<Result(Arguments...)> {
public:
    Call() = default;
    Call(std::nullptr_t) {}
    template <typename Function>
    Call(Function function)
        : function_(std::make_shared<const std::function<Result(Arguments...)>>(std::move(function))) {}

    explicit operator bool() const { return function_ && *function_; }
    Result operator()(Arguments... arguments) const {
        // The function may end what holds it.
        const auto function = function_;
        return (*function)(arguments...);
    }

private:
    std::shared_ptr<const std::function<Result(Arguments...)>> function_;
};

} // namespace kelvo
