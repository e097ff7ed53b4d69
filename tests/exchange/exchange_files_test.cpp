#include "exchange/exchange_files.h"

#include <gtest/gtest.h>

namespace tarno::exchange {

TEST(ExchangeFilesTest, ExtensionsAreFoundAsTheImportersDispatchOnThem) {
  EXPECT_EQ(ExtensionOfFile("/data/rivers.LSS.XML"), "lss.xml");
  EXPECT_EQ(ExtensionOfFile("a.b/rivers.brr.xml"), "brr.xml");
  EXPECT_EQ(ExtensionOfFile("model.v2.inh.xml"), "inh.xml");
  EXPECT_EQ(ExtensionOfFile("other.xml"), "xml");
  EXPECT_EQ(ExtensionOfFile("wells.2024.wl"), "wl");
  EXPECT_EQ(ExtensionOfFile("/dir.with.dots/noext"), "");
  EXPECT_EQ(ExtensionOfFile("trailing."), "");
}

}  // namespace tarno::exchange
