#pragma once

#include "platform/Browser.h"

#include <vector>

namespace pelloran::testing {

// Remembers what it was given, and finds nothing to open it with when told so.
class FakeBrowser final : public Browser {
public:
    std::vector<QUrl> opened;
    bool opens = true;

private:
    bool openWebLink(const QUrl& link) override {
        opened.push_back(link);
        return opens;
    }
};

} // namespace pelloran::testing
