#version 120
// One value in all channels. Input: value.
uniform float value;

void main() {
    gl_FragColor = vec4(value);
}
