// The program whose headers the tests reuse; it is never linked.
int main() {}
