/* Shows the cost of starting a program. */

int main(void) { return 0; }
