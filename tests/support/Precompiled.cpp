// There must be a source for the precompiled header to belong to.
