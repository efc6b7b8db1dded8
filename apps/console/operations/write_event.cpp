#include "apps/console/operations/write_event.h"

#include <utility>

#include "apps/console/operations/write_value.h"

namespace quoll::console {

namespace {

class Writer {
 public:
  explicit Writer(Json& array) : array_(array) {}

  void operator()(const platform::LogEvent& event) const {
    array_.push_back({{"log", json_text(event.text)}});
  }
  void operator()(const recording::Notification& posted) const {
    array_.push_back({{"posted", posted.name}, {"object", write_value(posted.object)}});
  }
  void operator()(const recording::Opening& opening) const {
    Json texts = Json::array();
    for (const auto& url : opening.urls) {
      texts.push_back(url ? Json(url->absoluteString()) : Json());
    }
    array_.push_back({{"opened", std::move(texts)},
                      {"application", opening.application},
                      {"options", static_cast<unsigned>(opening.options)}});
  }
  void operator()(const recording::OpeningAnswer& /*answer*/) const {}
  void operator()(const recording::WrittenFile& /*file*/) const {}

 private:
  Json& array_;
};

}  // namespace

void write_event(const recording::Event& event, Json& array) {
  std::visit(Writer(array), event);
}

}  // namespace quoll::console
