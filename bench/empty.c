/* A library with nothing in it: what the loader takes for itself. */
int empty;
