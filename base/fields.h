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

// Converts any JSON number or boolean as the library does, truncating fractions. C++ leaves the
// conversion of a fraction or exponent beyond the type's range undefined; this returns the type's least
// value. Throws nlohmann::json::type_error for anything else.
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
  // Reads a missing field, and every field of null `data`, as null. Throws nlohmann::json::type_error if
  // the field has another type, or if `data` is neither null nor an object.
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
// An optional field may be missing, but null is a value of the wrong type.
template <typename Value>
struct FieldReader<std::optional<Value>> {
  static std::optional<Value> Read(const nlohmann::json& data, const char* name) {
    if (data.is_null() || (data.is_object() && !data.contains(name))) return std::nullopt;
    return FieldReader<Value>::Read(data, name);
  }
};

// Reads the named fields from left to right, each as the type of the function's parameter. The first
// parameter receives `request_id`.
template <FieldName... kFields, typename... Parameters>
auto ReadArguments(void (* /*worker*/)(int, Parameters...), int request_id, const nlohmann::json& data) {
  static_assert(sizeof...(kFields) == sizeof...(Parameters), "one field for each parameter");
  return std::tuple<int, std::remove_cvref_t<Parameters>...>{
      request_id, FieldReader<std::remove_cvref_t<Parameters>>::Read(data, kFields.text)...};
}
