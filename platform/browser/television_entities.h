// SPDX-License-Identifier: Apache-2.0
// The entities (&nbsp;, &auml;) of documents that declare an HbbTV document type. The engine knows those of the XHTML document
// types by heart, and reads no DTD of any other. Process-wide, main thread; once, before the first document is read. Cannot fail.
#pragma once

namespace browser {

void knowTelevisionEntities();

}  // namespace browser
