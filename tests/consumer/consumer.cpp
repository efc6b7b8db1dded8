// What crosses the library's border: constants, records, classes that are asked for, exceptions.
#include <iostream>
#include <type_traits>

#include "quoll/foundation/exception.h"
#include "quoll/message/command_launcher.h"
#include "quoll/message/extension_message.h"
#include "quoll/platform/extension_host.h"
#include "quoll/platform/images.h"
#include "quoll/records/extension_address.h"
#include "quoll/requestutils/http_request.h"
#include "quoll/requestutils/url_components.h"
#include "quoll/requestutils/url_query.h"
#include "quoll/view/view_controller.h"

using quoll::foundation::Dictionary;
using quoll::foundation::NSURL;
using quoll::foundation::NSURLRequest;
namespace platform = quoll::platform;

/// True when the result lives on without the object that was asked.
template <typename Object, typename Result>
constexpr bool outlives_its_object(Result (Object::*)() const) {
  return !std::is_reference_v<Result> && !std::is_pointer_v<Result>;
}
static_assert(outlives_its_object(&NSURL::absoluteString) &&
              outlives_its_object(&NSURL::relativeString) && outlives_its_object(&NSURL::baseURL));
static_assert(outlives_its_object(&NSURLRequest::URL) &&
              outlives_its_object(&NSURLRequest::HTTPMethod) &&
              outlives_its_object(&NSURLRequest::allHTTPHeaderFields) &&
              outlives_its_object(&NSURLRequest::HTTPBody));
static_assert(outlives_its_object(&platform::NSAttributedString::string) &&
              outlives_its_object(&platform::NSAttributedString::runs) &&
              outlives_its_object(&platform::NSImage::data));
static_assert(outlives_its_object(&platform::NSView::frame) &&
              outlives_its_object(&platform::NSView::subviews) &&
              outlives_its_object(&platform::NSViewController::extensionContext));

std::shared_ptr<NSURL> url() {
  return NSURL::URLWithString("page", NSURL::URLWithString("http://h/"));
}

std::shared_ptr<quoll::foundation::NSMutableURLRequest> request() {
  return quoll::RequestUtils::POSTRequestWithURL(url(), Dictionary{{"name", "value"}});
}

std::shared_ptr<platform::NSAttributedString> styled_text() {
  return std::make_shared<platform::NSAttributedString>("a text too long to be held in place");
}

std::shared_ptr<platform::NSView> view_with_one_subview() {
  const auto view = std::make_shared<platform::NSView>();
  view->addSubview(std::make_shared<platform::NSView>());
  return view;
}

std::shared_ptr<platform::NSExtensionItem> extension_item() {
  const auto item = std::make_shared<platform::NSExtensionItem>();
  item->attributedTitle = styled_text();
  item->attachments = {nullptr};
  return item;
}

/// Walks over what objects hold that are gone when the loop begins. Answers how many elements.
int walk_over_temporaries() {
  int seen = 0;
  const auto count = [&seen](const auto& element) {
    const auto copy = element;  // reads it, so that a sanitizer sees memory that was freed
    static_cast<void>(copy);
    ++seen;
  };
  for (const char& c : url()->absoluteString()) count(c);
  for (const char& c : url()->relativeString()) count(c);
  for (const char& c : url()->baseURL()->absoluteString()) count(c);
  for (const auto& field : request()->allHTTPHeaderFields()) count(field);
  for (const char& c : request()->HTTPMethod()) count(c);
  for (const char& c : request()->HTTPBody().value_or(quoll::foundation::Bytes())) count(c);
  for (const char& c : request()->URL()->absoluteString()) count(c);
  for (const char& c : styled_text()->string()) count(c);
  for (const auto& run : styled_text()->runs()) count(run);
  for (const auto& view : view_with_one_subview()->subviews()) count(view);
  for (const auto& item : extension_item()->attachments()) count(item);
  for (const char& c : extension_item()->attributedTitle()->string()) count(c);
  return seen;
}

int main() {
  const auto address = quoll::ExtensionAddress::initWithDictonary(Dictionary{{"mail", "j@h"}});
  const auto message = quoll::ExtensionMessage::make();
  message->to().addObject(address);
  std::cout << message->queryUrl(quoll::commandCompose)->absoluteString() << '\n'
            << message->to().objectAtIndex(0).as<quoll::ExtensionAddress>()->prettyprint() << '\n'
            << quoll::it_vorlent_quoll_2 << '\n'
            << quoll::RequestUtils::URLFragmentComponent << '\n'
            << walk_over_temporaries() << '\n';
  try {
    static_cast<void>(quoll::RequestUtils::URLQueryParameters("?a=%FF"));
  } catch (const quoll::foundation::NSException& exception) {
    std::cout << exception.name() << '\n';
  }
}
