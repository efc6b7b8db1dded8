#include "quoll/linux/image_helper/images.h"

int main() {
  return quoll::image_helper::make_images("/helper") ? 0 : 1;
}
