// Entry point: the words of the command line in, the exit status out.
int main() { return 1; }
