#pragma once

#include <gmime/gmime.h>

#include <memory>

#include "quoll/linux/gio/handles.h"

namespace quoll::compose {

/// Owns one reference to a GMime object; they are all GObjects.
template <typename T>
using MimeHandle = gio::ObjectHandle<T>;
using FormatHandle = std::unique_ptr<GMimeFormatOptions, gio::Release<g_mime_format_options_free>>;

}  // namespace quoll::compose
