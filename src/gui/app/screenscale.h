#pragma once

/**
 * Pixel values of presets and style sheets are written for a screen of 96
 * dots per inch and scaled to the screen's logical dots per inch. Qt scales
 * for high-density screens by itself, so on most desktops the factor is 1;
 * it is more where the desktop asks for larger text.
 */
int screenDpi();
/** Makes screenDpi() answer `dpi`, for tests; 0 goes back to the screen's. */
void setScreenDpi(int dpi);
/** `value` * screenDpi() / 96. */
int scaledPixels(int value);
