// Ends the layout that cryptoki_layout_begin.h began.
#ifndef __linux__
#pragma pack(pop)
#endif
