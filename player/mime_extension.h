// SPDX-License-Identifier: Apache-2.0
#pragma once

/// File extension of a MIME type: that of the first table row whose type occurs anywhere in @p mimeType.
/// @return null for null and for a type that no row knows.
const char* mimeTypeToExtension(const char* mimeType);
