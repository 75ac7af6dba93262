// A program for the sake of its precompiled headers, which the tests share.
int main() { return 0; }
