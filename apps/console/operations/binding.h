#pragma once

#include <concepts>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "apps/console/operations/arguments.h"
#include "apps/console/operations/operation.h"
#include "quoll/foundation/collections.h"
#include "quoll/foundation/text.h"

/// Makes rows of the operation table from the functions of the library. The types of a function say
/// how its arguments and its result are converted.
namespace quoll::console {

/// Tells which of several functions of one name is meant: `overload<bool(int)>(f)`.
template <typename Signature>
constexpr Signature* overload(Signature* function) {
  return function;
}

namespace binding {

template <typename... P>
struct Parameters {
  static constexpr std::size_t count = sizeof...(P);
};
template <typename R, typename... P>
Parameters<P...> parameters_of(R (*)(P...));
template <typename R, typename Class, typename... P>
Parameters<const Class&, P...> parameters_of(R (Class::*)(P...) const);
template <typename R, typename Class, typename... P>
Parameters<Class&, P...> parameters_of(R (Class::*)(P...));

template <typename T>
struct Pointee {};
template <typename T>
struct Pointee<std::shared_ptr<T>> {
  using Type = T;
};

/// The value for a parameter of the type `P`. An object that is no pointer is the receiver, whose
/// class is known.
template <typename P>
decltype(auto) argument(const foundation::Value& value) {
  using T = std::remove_cvref_t<P>;
  if constexpr (std::derived_from<T, foundation::Object>) {
    return static_cast<T&>(*value.object());
  } else if constexpr (std::same_as<T, foundation::Value>) {
    return value;
  } else if constexpr (std::same_as<T, std::string_view>) {
    return text_argument(value);
  } else if constexpr (std::same_as<T, std::optional<std::string_view>>) {
    return optional_text_argument(value);
  } else if constexpr (std::same_as<T, std::optional<foundation::Date>>) {
    return date_argument(value);
  } else if constexpr (std::same_as<T, bool>) {
    return boolean_argument(value);
  } else if constexpr (std::same_as<T, RequestUtils::URLQueryOptions>) {
    return options_argument(value);
  } else if constexpr (std::same_as<T, foundation::List>) {
    return list_argument(value);
  } else if constexpr (std::same_as<T, foundation::Dictionary>) {
    return dictionary_argument(value);
  } else if constexpr (requires { typename Pointee<T>::Type; }) {
    return object_argument<typename Pointee<T>::Type>(value);
  } else {
    return objects_argument<typename Pointee<typename T::value_type>::Type>(value);
  }
}

template <typename T>
foundation::Value result(T&& found) {
  using Plain = std::remove_cvref_t<T>;
  if constexpr (requires { found.has_value(); }) {
    return found ? result(*found) : foundation::Value();
  } else if constexpr (std::same_as<Plain, foundation::Range>) {
    return foundation::List{foundation::Value(found.location), foundation::Value(found.length)};
  } else if constexpr (std::same_as<Plain, std::vector<std::string>>) {
    return foundation::List(std::vector<foundation::Value>(found.begin(), found.end()));
  } else {
    return std::forward<T>(found);
  }
}

/// Converts the values from the first to the last and calls the function. `receivers` is the number
/// of parameters for the receiver: 1, or 0 for an operation of a class.
template <auto kFunction, typename... P, std::size_t... I>
foundation::Value call(const Call& call, std::size_t receivers, Parameters<P...> /*types*/,
                       std::index_sequence<I...> /*places*/) {
  [[maybe_unused]] const auto value = [&](std::size_t place) -> const foundation::Value& {
    return place < receivers ? call.self : call.arguments[place - receivers];
  };
  const std::tuple<decltype(argument<P>(call.self))...> arguments{argument<P>(value(I))...};
  if constexpr (std::is_void_v<decltype(std::apply(kFunction, arguments))>) {
    std::apply(kFunction, arguments);
    return {};
  } else {
    return result(std::apply(kFunction, arguments));
  }
}

template <auto kFunction>
Operation operation(Operation::Level level, std::string name, std::string owner) {
  using Types = decltype(parameters_of(kFunction));
  const std::size_t receivers = level == Operation::Level::kInstance ? 1 : 0;
  return {std::move(name), std::move(owner), level, Types::count - receivers,
          [receivers](Call& call) {
            return binding::call<kFunction>(call, receivers, Types(),
                                            std::make_index_sequence<Types::count>());
          }};
}

}  // namespace binding

/// A row for a function that is asked of a class.
template <auto kFunction>
Operation class_operation(std::string name, std::string owner) {
  return binding::operation<kFunction>(Operation::Level::kClass, std::move(name), std::move(owner));
}

/// A row for a member function, or for a function whose first parameter is the receiver.
template <auto kFunction>
Operation instance_operation(std::string name, std::string owner) {
  return binding::operation<kFunction>(Operation::Level::kInstance, std::move(name),
                                       std::move(owner));
}

/// The same for a function of a text, which the console calls as one of the class of texts.
template <auto kFunction>
Operation text_operation(std::string name) {
  return instance_operation<kFunction>(std::move(name), "NSString");
}

/// As `instance_operation`, and the reply tells the receiver too.
template <auto kFunction>
Operation changing_operation(std::string name, std::string owner) {
  Operation row = instance_operation<kFunction>(std::move(name), std::move(owner));
  row.changes_receiver = true;
  return row;
}

}  // namespace quoll::console
