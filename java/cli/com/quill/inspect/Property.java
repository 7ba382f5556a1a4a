package com.quill.inspect;

import java.util.Map;

/**
 * An item property of ISO/IEC 23008-12. The index, from 1, is the one items refer to it by; values are numbers,
 * strings, booleans and lists of numbers by name, in the order of the box, and none when the type is not understood.
 * The text says the same in one line.
 */
public record Property(int index, String type, Map<String, Object> values, String text) {}
