#pragma once

/// Registers the program's images under ":/new/prefix1/images/"; call once after the application object exists.
void initKorvaneImages();
