#include "apps/console/operations/write_event.h"

#include <utility>

#include "apps/console/operations/write_value.h"

namespace quoll::console {

void write_event(const recording::Event& event, Json& array) {
  if (const auto* const logged = std::get_if<platform::LogEvent>(&event)) {
    array.push_back({{"log", json_text(logged->text)}});
  } else if (const auto* const posted = std::get_if<recording::Notification>(&event)) {
    array.push_back({{"posted", posted->name}, {"object", write_value(posted->object)}});
  } else if (const auto* const opening = std::get_if<recording::Opening>(&event)) {
    Json texts = Json::array();
    for (const auto& url : opening->urls) {
      texts.push_back(url ? Json(url->absoluteString()) : Json());
    }
    array.push_back({{"opened", std::move(texts)},
                     {"application", opening->application},
                     {"options", static_cast<unsigned>(opening->options)}});
  }
}

}  // namespace quoll::console
