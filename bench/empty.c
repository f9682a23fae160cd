/* What starting a program costs. */

int main(void) { return 0; }
