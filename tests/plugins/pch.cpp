// Compiled only to produce the precompiled header that the test plugins share.
