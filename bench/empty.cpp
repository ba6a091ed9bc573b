// A program that does nothing. Linked to the libraries whose cost it shows.
int main() {}
