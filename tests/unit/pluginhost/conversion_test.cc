// SPDX-License-Identifier: Apache-2.0
// What becomes of a script value whose type is not that of the row.
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <string>

#include "tests/unit/pluginhost/fake_plugin.h"

namespace {

struct Conversion {
  const char* name;
  const char* row;
  _CorvelNativeVariant value;
  const char* expected;  ///< what the row reads afterwards; null when the write is refused
};

void PrintTo(const Conversion& conversion, std::ostream* out) { *out << conversion.name; }

class ConversionTest : public testing::TestWithParam<Conversion> {};

TEST_P(ConversionTest, RowReadsAs) {
  FakePlugin plugin;
  ASSERT_TRUE(plugin.install());
  const std::string before = fake::read(plugin, GetParam().row);
  const char* const expected = GetParam().expected;

  EXPECT_EQ(pluginhost::writeProperty(plugin, GetParam().row, GetParam().value), expected != nullptr);

  EXPECT_EQ(fake::read(plugin, GetParam().row), expected == nullptr ? before : expected);
}

const double kNan = std::nan("");
const double kInfinity = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(Boolean, ConversionTest,
                         testing::Values(Conversion{"One", "flag", fake::integer(1), "bool:1"},
                                         Conversion{"Zero", "flag", fake::integer(0), "bool:0"},
                                         Conversion{"Half", "flag", fake::number(0.5), "bool:1"},
                                         Conversion{"NotANumber", "flag", fake::number(kNan), "bool:0"},
                                         Conversion{"Text", "flag", fake::text("false"), "bool:1"},
                                         Conversion{"EmptyText", "flag", fake::text(""), "bool:0"},
                                         Conversion{"Null", "flag", fake::null(), "bool:0"},
                                         Conversion{"Undefined", "flag", fake::undefined(), "bool:0"},
                                         Conversion{"Object", "flag", fake::object(nullptr), "bool:1"}),
                         [](const auto& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(Integer, ConversionTest,
                         testing::Values(Conversion{"True", "level", fake::boolean(true), "int:1"},
                                         Conversion{"Fraction", "level", fake::number(-2.9), "int:-2"},
                                         Conversion{"Largest", "level", fake::number(2147483647.0), "int:2147483647"},
                                         Conversion{"Smallest", "level", fake::number(-2147483648.0), "int:-2147483648"},
                                         Conversion{"TooLarge", "level", fake::number(2147483648.0), nullptr},
                                         Conversion{"NotANumber", "level", fake::number(kNan), nullptr},
                                         Conversion{"Infinite", "level", fake::number(kInfinity), nullptr},
                                         Conversion{"NumberText", "level", fake::text("12"), "int:12"},
                                         Conversion{"OtherText", "level", fake::text("12px"), nullptr},
                                         Conversion{"EmptyText", "level", fake::text(""), nullptr},
                                         Conversion{"Null", "level", fake::null(), nullptr},
                                         Conversion{"Undefined", "level", fake::undefined(), nullptr},
                                         Conversion{"Object", "level", fake::object(nullptr), nullptr}),
                         [](const auto& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(Double, ConversionTest,
                         testing::Values(Conversion{"True", "speed", fake::boolean(true), "double:1"},
                                         Conversion{"Whole", "speed", fake::integer(-4), "double:-4"},
                                         Conversion{"Infinite", "speed", fake::number(kInfinity), "double:inf"},
                                         Conversion{"NumberText", "speed", fake::text("-1.5"), "double:-1.5"},
                                         Conversion{"OtherText", "speed", fake::text("fast"), nullptr},
                                         Conversion{"Null", "speed", fake::null(), nullptr},
                                         Conversion{"Object", "speed", fake::object(nullptr), nullptr}),
                         [](const auto& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Text, ConversionTest,
    testing::Values(Conversion{"Whole", "title", fake::integer(640), "text:640"},
                    Conversion{"Fraction", "title", fake::number(12.5), "text:12.5"},
                    Conversion{"NegativeZero", "title", fake::number(-0.0), "text:0"},
                    Conversion{"BeyondInt", "title", fake::number(3000000000.0), "text:3000000000"},
                    Conversion{"Large", "title", fake::number(1e21), "text:1e+21"},
                    Conversion{"Small", "title", fake::number(1e-7), "text:1e-7"},
                    Conversion{"SmallPlain", "title", fake::number(-0.000001), "text:-0.000001"},
                    Conversion{"LongestPlain", "title", fake::number(-1.2345678901234567e-6), "text:-0.0000012345678901234567"},
                    Conversion{"Largest", "title", fake::number(-1.7976931348623157e308), "text:-1.7976931348623157e+308"},
                    Conversion{"NotANumber", "title", fake::number(kNan), "text:NaN"},
                    Conversion{"Infinite", "title", fake::number(-kInfinity), "text:-Infinity"},
                    Conversion{"False", "title", fake::boolean(false), "text:false"},
                    Conversion{"Null", "title", fake::null(), "text:"},
                    Conversion{"Undefined", "title", fake::undefined(), "text:"},
                    Conversion{"Object", "title", fake::object(nullptr), nullptr}),
    [](const auto& info) { return info.param.name; });

}  // namespace
