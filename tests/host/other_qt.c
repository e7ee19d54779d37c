/* Its file name is all that counts. */
const char g_cOtherQt = 6;
