// SPDX-License-Identifier: Apache-2.0
// The synchronous questions to the library.
#include <clocale>
#include <functional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "tests/unit/player/player_test_base.h"

namespace {

struct Row {
  const char* name;
  const char* key;
  int bufferSize;
  std::function<bool(Player&, double&)> ask;
};

std::ostream& operator<<(std::ostream& out, const Row& row) { return out << row.name; }

bool askErrorCode(Player& player, double& out) {
  int code = static_cast<int>(out);
  const bool known = player.getLastErrorCode(code);
  out = code;
  return known;
}

const std::vector<Row>& rows() {
  static const std::vector<Row> table{
      {"Duration", "DURATION", 128, [](Player& p, double& out) { return p.getDuration(out); }},
      {"Position", "POSITION", 128, [](Player& p, double& out) { return p.getPosition(out); }},
      {"PlaySpeed", "PLAY_SPEED", 2048, [](Player& p, double& out) { return p.getPlaySpeed(out); }},
      {"LastErrorCode", "LAST_ERR_CODE", 32, askErrorCode},
  };
  return table;
}

class PlayerQueryRowTest : public PlayerTestBase, public ::testing::WithParamInterface<Row> {
 protected:
  void answer(const std::string& text) { library().setProperty(GetParam().key, text); }
};

TEST_P(PlayerQueryRowTest, AsksOnTheCallingThread) {
  answer("4");
  double value = 0.0;

  EXPECT_TRUE(GetParam().ask(*player, value));

  EXPECT_EQ(4.0, value);
  const auto calls = library().calls();
  ASSERT_EQ(1U, calls.size());
  EXPECT_EQ(fakes::Function::kGetPlayerProperty, calls[0].function);
  EXPECT_EQ(GetParam().key, calls[0].name);
  EXPECT_EQ(GetParam().bufferSize, calls[0].number);
  EXPECT_EQ(handle, calls[0].handle);
  EXPECT_EQ(std::this_thread::get_id(), calls[0].thread);
}

TEST_P(PlayerQueryRowTest, LeavesTheOutputAlone_WhenTheLibraryRefuses) {
  double value = 77.0;

  EXPECT_FALSE(GetParam().ask(*player, value));

  EXPECT_EQ(77.0, value);
}

TEST_P(PlayerQueryRowTest, ReadsLeniently) {  // as atof and atoi do
  const std::vector<std::pair<std::string, double>> texts{{" 12abc", 12.0}, {"-3", -3.0}, {"", 0.0}, {"abc", 0.0}, {"+5", 5.0}};
  for (const auto& [text, expected] : texts) {
    answer(text);
    double value = 77.0;
    EXPECT_TRUE(GetParam().ask(*player, value)) << text;
    EXPECT_EQ(expected, value) << text;
  }
}

TEST_P(PlayerQueryRowTest, WaitsForNoCommand) {
  const auto blocked = blockWorker();
  answer("4");
  double value = 0.0;

  EXPECT_TRUE(GetParam().ask(*player, value));

  EXPECT_EQ(4.0, value);
}

INSTANTIATE_TEST_SUITE_P(Queries, PlayerQueryRowTest, ::testing::ValuesIn(rows()),
                         [](const auto& info) { return std::string(info.param.name); });

class PlayerNumberTest : public PlayerTestBase {};

TEST_F(PlayerNumberTest, ReadsFractions) {
  library().setProperty("POSITION", "1234.56");
  library().setProperty("PLAY_SPEED", "-0.50");
  double position = 0.0;
  double speed = 0.0;

  EXPECT_TRUE(player->getPosition(position));
  EXPECT_TRUE(player->getPlaySpeed(speed));

  EXPECT_EQ(1234.56, position);
  EXPECT_EQ(-0.5, speed);
}

TEST_F(PlayerNumberTest, AnErrorCodeIsAnInteger) {
  library().setProperty("LAST_ERR_CODE", "3.9");
  int code = 0;

  EXPECT_TRUE(player->getLastErrorCode(code));

  EXPECT_EQ(3, code);
}

TEST_F(PlayerNumberTest, AnErrorCodeBeyondIntSaturates) {
  library().setProperty("LAST_ERR_CODE", "99999999999");
  int code = 0;

  EXPECT_TRUE(player->getLastErrorCode(code));
  EXPECT_EQ(2147483647, code);
  library().setProperty("LAST_ERR_CODE", "-99999999999");
  EXPECT_TRUE(player->getLastErrorCode(code));
  EXPECT_EQ(-2147483647 - 1, code);
}

class CommaLocale {
 public:
  CommaLocale() : m_before(std::setlocale(LC_ALL, nullptr)) { m_set = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr; }
  ~CommaLocale() { std::setlocale(LC_ALL, m_before.c_str()); }
  bool set() const { return m_set; }

 private:
  const std::string m_before;
  bool m_set = false;
};

TEST_F(PlayerNumberTest, SendsAndReadsPoints_UnderACommaLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.set()) << "the locale de_DE.UTF-8 is missing";
  ASSERT_STREQ(",", std::localeconv()->decimal_point);
  library().setProperty("PLAY_SPEED", "1.50");
  double speed = 0.0;

  EXPECT_TRUE(player->getPlaySpeed(speed));
  ASSERT_TRUE(player->play(1.5));
  ASSERT_TRUE(player->seek(2500.25));

  EXPECT_EQ(1.5, speed);
  EXPECT_EQ((std::vector<std::string>{"PLAY 1.50", "SEEK 2500.25", "STOP"}), actionsUntilClosed());
}

}  // namespace
