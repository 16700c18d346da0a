#include "base/fields.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using nlohmann::json;

void Body(int, const std::string&, bool, uint32_t, const std::vector<std::string>&, std::optional<bool>) {}

auto Read(const json& data) {
  return ReadArguments<"text", "flag", "count", "list", "choice">(&Body, 7, data);
}

}  // namespace

TEST(ReadArguments, ReadsEachFieldAsItsParametersType) {
  json data = {{"text", "a"}, {"flag", true}, {"count", 42.9}, {"list", {"b", "c"}}, {"other", 1}};
  const std::vector<std::string> list = {"b", "c"};
  EXPECT_EQ(Read(data), std::tuple(7, "a", true, 42u, list, std::nullopt));
  data["choice"] = false;
  EXPECT_EQ(Read(data), std::tuple(7, "a", true, 42u, list, std::optional(false)));

  const std::string must_be = "[json.exception.type_error.302] type must be ";
  const struct {
    const char* change;  // merged into the data
    std::string want;
  } cases[] = {
      {R"({"text":1})", must_be + "string, but is number"},
      {R"({"flag":null,"count":"1"})", must_be + "boolean, but is null"},
      {R"({"count":"1"})", must_be + "number, but is string"},
      {R"({"list":{}})", must_be + "array, but is object"},
      {R"({"choice":1})", must_be + "boolean, but is number"},
  };
  for (const auto& c : cases) {
    json changed = data;
    changed.merge_patch(json::parse(c.change));
    try {
      Read(changed);
      ADD_FAILURE() << c.change;
    } catch (const json::type_error& error) {
      EXPECT_EQ(error.what(), c.want);
    }
  }
  EXPECT_THROW(Read(nullptr), json::type_error);
  EXPECT_THROW(Read(json::array({1})), json::type_error);
}
