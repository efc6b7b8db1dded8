#include "examples/reference/examples.h"

int main() {
  examples::url_query();
  examples::url_editing();
  examples::url_components();
  examples::base64_text();
  examples::http_request();
  examples::nsurl();
  examples::values();
  examples::property_lists();
  examples::texts();
  examples::errors();
  examples::dates();
  examples::records();
  examples::messages();
}
