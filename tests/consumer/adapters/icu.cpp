#include "quoll/linux/icu/date_formatter.h"

int main() {
  return quoll::icu::make_dates() ? 0 : 1;
}
