#pragma once

#include <gmime/gmime.h>

#include <memory>

#include "quoll/linux/gio/handles.h"

namespace quoll::compose {

/// One reference to an object of the MIME library, which are all GObjects.
template <typename T>
using MimeHandle = gio::ObjectHandle<T>;
using FormatHandle = std::unique_ptr<GMimeFormatOptions, gio::Release<g_mime_format_options_free>>;

}  // namespace quoll::compose
