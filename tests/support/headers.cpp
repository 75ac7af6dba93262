// A program that exists only for its precompiled headers, which the tests share.
int main() { return 0; }
