#version 120
// Every pass draws one quad. Inputs: vertices in the world's units, texture coordinates 0..1 over the quad.
varying vec2 rtPosition;

void main() {
    gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;
    rtPosition = gl_MultiTexCoord0.xy;
}
