#include "quoll/foundation/text.h"

#include <iostream>

#include "examples/reference/examples.h"
#include "quoll/foundation/base64.h"
#include "quoll/foundation/format.h"
#include "quoll/foundation/number_text.h"
#include "quoll/foundation/path.h"
#include "quoll/foundation/percent.h"
#include "quoll/foundation/printable.h"

void examples::texts() {
  using namespace quoll::foundation;
  std::cout << '"' << trim("\t a b\n") << "\"\n";                     // "a b"
  std::cout << utf8_with_escapes("a\xFF") << '\n';                    // a%FF
  std::cout << last_path_component("/tmp/a.tar.gz/") << '\n';         // a.tar.gz
  std::cout << path_extension("/tmp/a.tar.gz") << '\n';               // gz
  std::cout << appending_path_component("/tmp", "b") << '\n';         // /tmp/b
  std::cout << integer_of_text(" -12 or so") << '\n';                 // -12
  std::cout << text_of_real(0.5) << '\n';                             // 0.5
  std::cout << percent_encode_path("/a b") << '\n';                   // /a%20b
  std::cout << base64_encode("foo") << '\n';                          // Zm9v
  std::cout << printable("a\nb") << '\n';                             // a\nb
  std::cout << format("%@ (%@)", std::string("Friends"), 3) << '\n';  // Friends (3)
}
