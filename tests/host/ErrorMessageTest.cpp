#include "Host/ErrorMessage.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "Host/BaseStringUtil.h"
#include "Host/KXAssert.h"
#include "Host/ServerLog.h"
#include "host/Threads.h"

namespace {

TEST(ErrorMessage, FillsPlaceholders) {
  const std::pair<KXString, const wchar_t*> cases[] = {
      // An argument that looks like a placeholder stays as it is.
      {ErrorMessage::LoadString(kMsgAttributeNotInExpression, L"%2", L"100%", L"%%1"),
       L"The attribute %2.100% does not occur in the expression: %%1"},
      {ErrorMessage::LoadString(kMsgAttributeNotInExpression, L"Time"),
       L"The attribute Time. does not occur in the expression: "},
      {ErrorMessage::LoadString(999999, L"a", L""), L"Unknown message code 999999: \"a\", \"\""},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(text, expected);
}

TEST(ErrorMessage, CatalogueHoldsTheAgreedCodes) {
  for (const unsigned long code : {14079, 15008, 22038, 22043, 22044, 23006, 42023, 59118}) {
    EXPECT_EQ(ErrorMessage::LoadString(code).find(L"Unknown"), KXString::npos) << code;
  }
}

/// Collects the log for the time of a test.
class LogCapture {
 public:
  LogCapture()
      : m_previous(
            ServerLog::SetSink([this](bool bError, const KXString& text) { m_messages.emplace_back(bError, text); })) {}
  ~LogCapture() { ServerLog::SetSink(m_previous); }

  std::vector<std::pair<bool, KXString>> m_messages;

 private:
  ServerLog::Sink m_previous;
};

TEST(ErrorMessage, IsNotedInTheLogAndThrown) {
  const LogCapture log;
  try {
    KX_RAISE(kMsgAggregateExpected, L"Tópn");
    FAIL();
  } catch (const std::exception& caught) {
    EXPECT_STREQ(caught.what(), "22038: The first argument of T\xc3\xb3pn must be an aggregate.");
    const auto& message = dynamic_cast<const ErrorMessage&>(caught);
    EXPECT_EQ(message.GetCode(), 22038u);
    EXPECT_EQ(message.GetText(), L"The first argument of Tópn must be an aggregate.");
    EXPECT_EQ(message.GetArgs(), KXStringVector{L"Tópn"});
  }
  ErrorMessage::prethrowProcess(ErrorMessage(kMsgStackLow), false, __FILE__, __LINE__);
  ASSERT_EQ(log.m_messages.size(), 1u);
  EXPECT_FALSE(log.m_messages[0].first);
  EXPECT_NE(log.m_messages[0].second.find(L"ErrorMessageTest.cpp:"), KXString::npos);
  EXPECT_NE(log.m_messages[0].second.find(L"22038: The first argument"), KXString::npos);
}

TEST(ServerLog, DefaultSinkWritesErrorsOnly) {
  testing::internal::CaptureStderr();
  ServerLog::LogMessage(false, L"information");
  ServerLog::LogMessage(true, L"wide é literal");
  ServerLog::LogMessage(true, KXString(L"string"));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "wide \xc3\xa9 literal\nstring\n");
}

TEST(ServerLog, SinkIsCalledByOneThreadAtATime) {
  LogCapture log;
  RunThreads(4, [](int t) {
    for (int i = 0; i < 500; ++i) ServerLog::LogMessage(i % 2 == 0, BaseStringUtil::StringFrom(t * 500 + i));
  });
  std::set<KXString> texts;
  for (const auto& [bError, text] : log.m_messages) texts.insert(text);
  EXPECT_EQ(texts.size(), 2000u);
}

TEST(KXAssertDeathTest, ReportsPlaceAndText) {
  const int two = 2;
  KX_ASSERT(two == 2);
  EXPECT_DEATH(KX_ASSERT(std::pair<int, int>(two, 3).first == 3),
               "ErrorMessageTest.cpp:[0-9]+: assertion failed: std::pair<int, int>\\(two, 3\\).first == 3\n");
  EXPECT_DEATH(KX_ASSERT_TEXT(two == 3, L"pAggr"), ": assertion failed: pAggr\n");
  EXPECT_DEATH(KX_LOGIC_ERROR(L""), "ErrorMessageTest.cpp:[0-9]+: logic error\n");
  EXPECT_DEATH(KX_LOGIC_ERROR(KXString(L"kind é")), ": logic error: kind \xc3\xa9\n");
}

}  // namespace
