// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/web_address.h"

#include <gtest/gtest.h>

namespace {

TEST(WebAddressTest, IsHttpOrHttps) {
  EXPECT_TRUE(mediamgmnt::isWebAddress("http://h/"));
  EXPECT_TRUE(mediamgmnt::isWebAddress("HTTPS://h/"));
  for (const char* const other : {"", "file:///etc/passwd", "//h/x", "x.mp4", "rtsp://h/", "http:/h", "xhttp://h/"}) {
    EXPECT_FALSE(mediamgmnt::isWebAddress(other)) << other;
  }
}

TEST(WebAddressTest, NamesAHost) {
  for (const char* const address :
       {"http://h", "http://h/", "http://h:1/x", "https://[::1]/x", "http://user@h/x", "http://h?x", "http://a@b@h/"}) {
    EXPECT_TRUE(mediamgmnt::namesHost(address)) << address;
  }
  for (const char* const none :
       {"", "http:", "http://", "http:///x", "http://?x", "http://#x", "http://:80/x", "http://user@/x", "http://user@:80/"}) {
    EXPECT_FALSE(mediamgmnt::namesHost(none)) << none;
  }
}

}  // namespace
