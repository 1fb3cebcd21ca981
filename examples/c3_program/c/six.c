/* Called from C3. */
int six(void) {
    return 6;
}
