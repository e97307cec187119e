// Holds nothing: the headers that the tests share precompiled need a source to belong to.
