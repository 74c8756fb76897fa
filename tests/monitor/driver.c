// What the module asks of OpenGL's own library, doing nothing. The program that loads this needs no OpenGL.

void glClearDepth(double depth) {
    (void)depth;
}
void glDepthFunc(unsigned function) {
    (void)function;
}
void glColor3f(float r, float g, float b) {
    (void)r, (void)g, (void)b;
}
void glMatrixMode(unsigned mode) {
    (void)mode;
}
void glLoadIdentity(void) {}
void glOrtho(double a, double b, double c, double d, double e, double f) {
    (void)a, (void)b, (void)c, (void)d, (void)e, (void)f;
}
void glTranslated(double x, double y, double z) {
    (void)x, (void)y, (void)z;
}
void glBegin(unsigned mode) {
    (void)mode;
}
void glEnd(void) {}
void glTexCoord2f(float s, float t) {
    (void)s, (void)t;
}
void glVertex3f(float x, float y, float z) {
    (void)x, (void)y, (void)z;
}
void glClearColor(float r, float g, float b, float a) {
    (void)r, (void)g, (void)b, (void)a;
}
void glClear(unsigned mask) {
    (void)mask;
}
