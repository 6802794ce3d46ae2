#pragma once

#include "LicenceLayer.h"

/// The built-in licence layer: Korvane is free software, so this edition needs no key and
/// checks none.
class FreeEdition final : public LicenceLayer
{
public:
    /// Always false: there is nothing to register.
    bool isRegistered() const override { return false; }
    /// The project version this build was configured with.
    QString buildNumber() const override;
    /// Says that this edition is free software under the MIT licence and needs no key.
    QString registrationText() const override;
};
