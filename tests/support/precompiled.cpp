// A target needs a source; the header before it is what is wanted.
