#pragma once

#include <QString>

/// What the program needs from the licence layer: which edition this is, the build number
/// for the window title, and what its registration dialog says.
class LicenceLayer
{
public:
    virtual ~LicenceLayer() = default;
    /// True for the registered edition, false for the free one.
    virtual bool isRegistered() const = 0;
    /// The build number text of the window title and the about box.
    virtual QString buildNumber() const = 0;
    /// The rich text the "Register..." action shows.
    virtual QString registrationText() const = 0;
};

/// "Korvane Build %1" for the registered edition, "Korvane [Build %1 Free Version]" for the free one.
QString windowTitle(const LicenceLayer &licence);
