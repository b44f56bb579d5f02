// Ends what cryptoki_layout_begin.h began: nothing.
