// Carries the precompiled header that the widget tests share.
