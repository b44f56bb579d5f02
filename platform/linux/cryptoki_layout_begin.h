// Layout of Cryptoki structures: the compiler's natural one, as Linux modules are built.
