#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <limits>
#include <optional>
#include <tuple>
#include <type_traits>

#include <nlohmann/json.hpp>

// Reads the fields of a request's arguments with the types of the function that takes them.

// The name of a field as a template argument.
template <size_t kSize>
struct FieldName {
  char text[kSize] = {};
  consteval FieldName(const char (&name)[kSize]) { std::copy_n(name, kSize, text); }  // NOLINT: implicit
};

// Converts any JSON number or boolean as the library does, fractions cut off. The language leaves open what a
// fraction or exponent beyond the type's range becomes: here it is the least value. Throws
// nlohmann::json::type_error for anything else.
template <std::integral Integer>
Integer ToInteger(const nlohmann::json& value) {
  using Limits = std::numeric_limits<Integer>;
  if (!value.is_number_float()) return value.get<Integer>();
  const double number = value.get<double>();
  const bool fits =
      number > static_cast<double>(Limits::min()) - 1.0 && number < static_cast<double>(Limits::max()) + 1.0;
  return fits ? static_cast<Integer>(number) : Limits::min();
}

template <typename Value>
struct FieldReader {
  // A missing field reads as null, and so does every field of null `data`. Throws nlohmann::json::type_error
  // if the field has another type or `data` is neither null nor an object.
  static Value Read(const nlohmann::json& data, const char* name) {
    const nlohmann::json null;
    const bool is_missing = data.is_null() || (data.is_object() && !data.contains(name));
    const nlohmann::json& field = is_missing ? null : data[name];
    if constexpr (std::integral<Value> && !std::same_as<Value, bool>)
      return ToInteger<Value>(field);
    else
      return field.get<Value>();
  }
};
// A field that may be missing; null is a value of the wrong type.
template <typename Value>
struct FieldReader<std::optional<Value>> {
  static std::optional<Value> Read(const nlohmann::json& data, const char* name) {
    if (data.is_null() || (data.is_object() && !data.contains(name))) return std::nullopt;
    return FieldReader<Value>::Read(data, name);
  }
};

// Reads the named fields from left to right, each as the type of the function's own parameter; `request_id`
// goes to the first parameter.
template <FieldName... kFields, typename... Parameters>
auto ReadArguments(void (*)(int, Parameters...), int request_id, const nlohmann::json& data) {
  static_assert(sizeof...(kFields) == sizeof...(Parameters), "one field for each parameter");
  return std::tuple<int, std::remove_cvref_t<Parameters>...>{
      request_id, FieldReader<std::remove_cvref_t<Parameters>>::Read(data, kFields.text)...};
}
