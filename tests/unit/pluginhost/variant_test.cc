// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "tests/unit/pluginhost/fake_plugin.h"

namespace {

using fake::shown;

TEST(VariantTest, IsUndefinedAndZero_WhenMade) {
  const _CorvelNativeVariant variant;

  EXPECT_EQ(variant.details.type, CORVEL_UNDEFINED);
  EXPECT_EQ(variant.details.access, CORVEL_ORDINARY);
  EXPECT_EQ(variant.string.text, nullptr);
  EXPECT_EQ(variant.string.length, 0U);
  EXPECT_EQ(variant.integer, 0);
}

TEST(VariantTest, WritersSetTypeAndValue_AndKeepTheAccessWord) {
  _CorvelNativeVariant variant;
  variant.details.access = CORVEL_ATTRIBUTE;

  cvnplUtil::set(true, variant);
  EXPECT_EQ(shown(variant), "bool:1");
  cvnplUtil::set(-5, variant);
  EXPECT_EQ(shown(variant), "int:-5");
  cvnplUtil::set(1.25, variant);
  EXPECT_EQ(shown(variant), "double:1.25");
  cvnplUtil::set("abc", variant, true);
  EXPECT_EQ(shown(variant), "text:abc");
  EXPECT_EQ(variant.details.access, CORVEL_ATTRIBUTE);
}

TEST(VariantTest, UnsignedLongBecomesADouble) {
  _CorvelNativeVariant variant;

  cvnplUtil::set(4294967296UL, variant);

  EXPECT_EQ(variant.details.type, CORVEL_DOUBLE);
  EXPECT_EQ(variant.number, 4294967296.0);
}

TEST(VariantTest, NumbersLeaveNoTextBehind) {
  _CorvelNativeVariant variant = fake::text("a text of some length");

  cvnplUtil::set(3, variant);

  EXPECT_EQ(variant.string.length, 0U) << "whoever does not look at the type finds no text";
}

TEST(VariantTest, IntegerZeroUnderADoubleTypeCodeReadsAsZero) {
  _CorvelNativeVariant variant = fake::number(7.5);

  cvnplUtil::set(0, variant);
  variant.details.type = CORVEL_DOUBLE;

  EXPECT_EQ(variant.number, 0.0);
}

TEST(VariantTest, CopiedTextIsIndependentOfItsSource) {
  std::string source = "before";
  _CorvelNativeVariant variant;

  cvnplUtil::set(source.c_str(), variant, true);
  source = "after!";

  EXPECT_EQ(shown(variant), "text:before");
}

TEST(VariantTest, BorrowedTextFollowsItsSource) {
  std::string source = "before";
  _CorvelNativeVariant variant;

  cvnplUtil::set(source.c_str(), variant, false);
  source[0] = 'B';

  EXPECT_EQ(variant.string.text, source.c_str());
  EXPECT_EQ(shown(variant), "text:Before");
}

TEST(VariantTest, CountedTextMayHoldNulsAndNeedsNoTerminator) {
  const char bytes[] = {'a', '\0', 'b'};
  _CorvelNativeVariant variant;

  cvnplUtil::set(bytes, variant, 3, true);

  EXPECT_EQ(variant.string.length, 3U);
  EXPECT_EQ(std::string(variant.string.text, 3), std::string("a\0b", 3));
}

TEST(VariantTest, NegativeCountIsAnEmptyText) {
  _CorvelNativeVariant variant;

  cvnplUtil::set("abc", variant, -1, true);

  EXPECT_EQ(shown(variant), "text:");
}

TEST(VariantTest, NullTextStaysNull) {
  _CorvelNativeVariant plain;
  _CorvelNativeVariant counted;

  cvnplUtil::set(static_cast<const char*>(nullptr), plain, true);
  cvnplUtil::set(nullptr, counted, 12, false);

  EXPECT_EQ(shown(plain), "text:(null)");
  EXPECT_EQ(shown(counted), "text:(null)");
  EXPECT_EQ(counted.string.length, 0U);
}

TEST(VariantTest, SetFromItsOwnTextIsSafe) {
  _CorvelNativeVariant variant = fake::text("own text");

  cvnplUtil::set(variant.string.text + 4, variant, true);

  EXPECT_EQ(shown(variant), "text:text");
}

TEST(VariantTest, CopiesOwnTheirTexts) {
  auto original = std::make_unique<_CorvelNativeVariant>(fake::text("kept"));
  const _CorvelNativeVariant copy(*original);
  _CorvelNativeVariant assigned = fake::integer(1);
  assigned = *original;

  original.reset();

  EXPECT_EQ(shown(copy), "text:kept");
  EXPECT_EQ(shown(assigned), "text:kept");
}

TEST(VariantTest, AssignmentToItselfChangesNothing) {
  _CorvelNativeVariant variant = fake::text("self");
  const _CorvelNativeVariant& same = variant;

  variant = same;

  EXPECT_EQ(shown(variant), "text:self");
}

TEST(VariantTest, ObjectsAreSharedAndReleased) {
  auto object = std::make_shared<FakeScriptObject>();
  const std::weak_ptr<FakeScriptObject> watch = object;
  _CorvelNativeVariant variant = fake::object(object);
  const _CorvelNativeVariant copy = variant;
  object.reset();

  EXPECT_EQ(copy.object.object.get(), watch.lock().get());
  cvnplUtil::set(1, variant);
  EXPECT_FALSE(watch.expired());
  variant = copy;
  EXPECT_EQ(shown(variant), "object");
}

TEST(VariantTest, AssignmentOfAnObjectIntoAnObjectReleasesTheFirst) {
  auto first = std::make_shared<FakeScriptObject>();
  const std::weak_ptr<FakeScriptObject> watch = first;
  _CorvelNativeVariant variant = fake::object(std::move(first));

  variant = fake::object(nullptr);

  EXPECT_TRUE(watch.expired());
  EXPECT_EQ(shown(variant), "object:null");
}

}  // namespace
