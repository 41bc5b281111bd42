// The least that a C++ programme does.
int main() {}
