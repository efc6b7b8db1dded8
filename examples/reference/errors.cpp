#include "quoll/foundation/error.h"

#include <cerrno>
#include <iostream>

#include "examples/reference/examples.h"
#include "quoll/foundation/exception.h"

void examples::errors() {
  using namespace quoll::foundation;
  const Error error = file_error(ENOENT, "/tmp/none", false);
  std::cout << error.domain << ' ' << error.code << '\n';  // NSCocoaErrorDomain 260
  std::cout << *error.detail("NSFilePath") << '\n';        // /tmp/none
  std::cout << error.underlying()->code << '\n';           // 2
  try {
    raise_range("outside");
  } catch (const NSException& exception) {
    std::cout << exception.name() << ": " << exception.reason()
              << '\n';  // NSRangeException: outside
  }
}
