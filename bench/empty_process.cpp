// What the start of any C++ process costs.
int main() {}
