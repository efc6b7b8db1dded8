#include "quoll/requestutils/http_request.h"

#include <gtest/gtest.h>

#include "quoll/foundation/exception.h"

namespace quoll::RequestUtils {

namespace {

using foundation::Bytes;
using foundation::Dictionary;
using foundation::NSMutableURLRequest;
using foundation::NSURL;

TEST(HttpRequest, IsReadThroughItsConstantForm) {
  const auto request = POSTRequestWithURL(NSURL::URLWithString("http://u:p@h/?x=1"),
                                          Dictionary{{"a", "1"}, {"b", "2"}});
  const foundation::NSURLRequest& read = *request;
  EXPECT_EQ(GETParameters(read), (Dictionary{{"x", "1"}}));
  EXPECT_EQ(POSTParameters(read), (Dictionary{{"a", "1"}, {"b", "2"}}));
  EXPECT_EQ(HTTPBasicAuthUser(read), "u");
  EXPECT_EQ(HTTPBasicAuthPassword(read), "p");
}

TEST(HttpRequest, TakesTimeInProportionToAHeader) {
  const auto request = NSMutableURLRequest::requestWithURL(nullptr);
  std::string value;
  for (int i = 0; i < 300000; ++i) {
    value += "Basic ";
  }
  request->addValue(value + "dTpw", "Authorization");
  EXPECT_EQ(HTTPBasicAuthComponents(*request), (std::vector<std::string>{"u", "p"}));
}

TEST(HttpRequest, ChangesNothingButTheRequest) {
  const Dictionary parameters{{"a", "1"}};
  const auto url = NSURL::URLWithString("http://h/?x=1");
  const auto request = NSMutableURLRequest::requestWithURL(url);
  addGETParameters(*request, parameters, {});
  EXPECT_EQ(url->absoluteString(), "http://h/?x=1");
  EXPECT_EQ(request->URL()->absoluteString(), "http://h/?x=1&a=1");
  EXPECT_EQ(parameters, (Dictionary{{"a", "1"}}));
}

TEST(HttpRequest, LeavesARequestAloneWhenParametersDoNotCompose) {
  const auto request = NSMutableURLRequest::requestWithURL(NSURL::URLWithString("http://h/?x=1"));
  const Dictionary wrong{{"a", 5}};
  EXPECT_THROW(setGETParameters(*request, wrong), foundation::NSException);
  EXPECT_THROW(addGETParameters(*request, wrong, {}), foundation::NSException);
  EXPECT_THROW(setPOSTParameters(*request, wrong), foundation::NSException);
  EXPECT_THROW(addPOSTParameters(*request, wrong, {}), foundation::NSException);
  EXPECT_EQ(request->URL()->absoluteString(), "http://h/?x=1");
  EXPECT_TRUE(request->allHTTPHeaderFields().empty());
  EXPECT_FALSE(request->HTTPBody());
}

}  // namespace

}  // namespace quoll::RequestUtils
