// SPDX-License-Identifier: Apache-2.0
// Pages on which setting the same media address again does not restart playback. The addresses belong to the deployment and are set
// when the build is configured (AVC_SPECIAL_TEST_SUITE_URL, AVC_SPECIAL_PORTAL_URL).
#pragma once

extern const char* const SPECIAL_HOST_URLS[2];

/// Exact comparison; @p url is a page's address up to its last "/". False for null.
bool is_host_url_in_special_list(const char* url);
