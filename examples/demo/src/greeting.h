#pragma once

/* A greeting for somebody; valid until the next call. */
const char* greeting(const char* who);
