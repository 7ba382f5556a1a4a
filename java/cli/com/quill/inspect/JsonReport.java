package com.quill.inspect;

import com.fasterxml.jackson.core.JsonFactory;
import com.fasterxml.jackson.core.JsonGenerator;
import com.fasterxml.jackson.core.StreamWriteFeature;
import com.fasterxml.jackson.core.json.JsonWriteFeature;
import com.fasterxml.jackson.core.util.DefaultPrettyPrinter;
import java.io.IOException;
import java.io.Writer;
import java.nio.ByteOrder;
import java.util.Collection;
import java.util.List;
import java.util.Map;

/** A report as one JSON document, complete; docs/inspect.md lists the names, which stay as they are. */
public final class JsonReport {
    private final HeifReport mReport;
    private final JsonGenerator mJson;

    /** Writes one element of an array. */
    private interface Element<T> {
        void write(T element) throws IOException;
    }

    private JsonReport(HeifReport report, JsonGenerator json) {
        mReport = report;
        mJson = json;
    }

    /** Plain ASCII, whatever the terminal's encoding is. Does not close {@code out}. */
    public static void write(HeifReport report, Writer out) throws IOException {
        JsonFactory factory = JsonFactory.builder().disable(StreamWriteFeature.AUTO_CLOSE_TARGET)
                .enable(JsonWriteFeature.ESCAPE_NON_ASCII).build();
        try (JsonGenerator json = factory.createGenerator(out)) {
            json.setPrettyPrinter(new DefaultPrettyPrinter());
            new JsonReport(report, json).write();
            json.writeRaw('\n');
        }
    }

    private void write() throws IOException {
        mJson.writeStartObject();
        mJson.writeStringField("file", FileNames.textOf(mReport.mPath));
        mJson.writeNumberField("size", mReport.mSize);
        mJson.writeStringField("majorBrand", mReport.mMajorBrand);
        writeArray("compatibleBrands", mReport.mCompatibleBrands, mJson::writeString);
        writeArray("boxes", mReport.mBoxes, this::writeBox);
        Item primary = mReport.primary();
        if (primary != null) mJson.writeNumberField("primaryItem", primary.mId);
        writeArray("items", mReport.mItems, this::writeItem);
        writeArray("grids", mReport.mGrids, this::writeGrid);
        writeArray("exif", mReport.mExif, this::writeExif);
        writeArray("xmp", mReport.mXmp, this::writeXmp);
        writeArray("livePhoto", mReport.mLivePhoto, this::writeSection);
        writeArray("problems", mReport.problems(), mJson::writeString);
        mJson.writeEndObject();
    }

    private <T> void writeArray(String name, Collection<T> elements, Element<T> element) throws IOException {
        mJson.writeArrayFieldStart(name);
        for (T each : elements) element.write(each);
        mJson.writeEndArray();
    }

    private void writeSection(LivePhotoSection section) throws IOException {
        mJson.writeStartObject();
        mJson.writeStringField("type", section.kind().mType);
        mJson.writeNumberField("offset", section.offset());
        mJson.writeNumberField("size", section.size());
        mJson.writeEndObject();
    }

    private void writeBox(Box box) throws IOException {
        mJson.writeStartObject();
        mJson.writeStringField("type", box.type());
        mJson.writeNumberField("offset", box.offset());
        mJson.writeNumberField("size", box.size());
        if (!box.children().isEmpty()) writeArray("children", box.children(), this::writeBox);
        mJson.writeEndObject();
    }

    // ---- items

    private void writeItem(Item item) throws IOException {
        mJson.writeStartObject();
        mJson.writeNumberField("id", item.mId);
        mJson.writeStringField("type", item.mType);
        mJson.writeBooleanField("hidden", item.mHidden);
        mJson.writeBooleanField("primary", item.mPrimary);
        if (!item.mName.isEmpty()) mJson.writeStringField("name", item.mName);
        if (item.mContentType != null) mJson.writeStringField("contentType", item.mContentType);
        mJson.writeStringField("construction", item.construction());
        mJson.writeNumberField("size", item.size());
        writeArray("extents", item.mExtents, this::writeExtent);
        writeArray("references", item.mReferences, this::writeReference);
        writeArray("properties", item.mProperties, this::writeUse);
        mJson.writeEndObject();
    }

    private void writeExtent(Item.Extent extent) throws IOException {
        mJson.writeStartObject();
        mJson.writeNumberField("offset", extent.offset());
        mJson.writeNumberField("size", extent.size());
        mJson.writeEndObject();
    }

    private void writeReference(Item.Reference reference) throws IOException {
        mJson.writeStartObject();
        mJson.writeStringField("type", reference.type());
        mJson.writeFieldName("to");
        mJson.writeArray(reference.to(), 0, reference.to().length);
        mJson.writeEndObject();
    }

    private void writeUse(Item.Use use) throws IOException {
        Property property = use.property();
        mJson.writeStartObject();
        mJson.writeNumberField("index", property.index());
        mJson.writeStringField("type", property.type());
        mJson.writeBooleanField("essential", use.essential());
        mJson.writeStringField("text", property.text());
        mJson.writeObjectFieldStart("values");
        for (Map.Entry<String, Object> value : property.values().entrySet()) {
            mJson.writeFieldName(value.getKey());
            writeValue(value.getValue());
        }
        mJson.writeEndObject();
        mJson.writeEndObject();
    }

    private void writeValue(Object value) throws IOException {
        if (!(value instanceof List)) {
            mJson.writePOJO(value);  // numbers, strings and booleans need no mapping
            return;
        }
        mJson.writeStartArray();
        for (Object element : (List<?>) value) mJson.writePOJO(element);
        mJson.writeEndArray();
    }

    private void writeGrid(Grid grid) throws IOException {
        mJson.writeStartObject();
        mJson.writeNumberField("item", grid.itemId());
        mJson.writeNumberField("rows", grid.rows());
        mJson.writeNumberField("columns", grid.columns());
        mJson.writeNumberField("width", grid.width());
        mJson.writeNumberField("height", grid.height());
        mJson.writeNumberField("tileWidth", grid.tileWidth());
        mJson.writeNumberField("tileHeight", grid.tileHeight());
        writeArray("tiles", grid.tiles(), mJson::writeNumber);
        mJson.writeEndObject();
    }

    // ---- metadata

    private void writeExif(ExifData exif) throws IOException {
        mJson.writeStartObject();
        mJson.writeNumberField("item", exif.itemId());
        mJson.writeNumberField("size", exif.sample().length);
        mJson.writeNumberField("tiffOffset", exif.tiffOffset());
        mJson.writeStringField("byteOrder", exif.order() == ByteOrder.LITTLE_ENDIAN ? "II" : "MM");
        writeArray("directories", exif.directories(), this::writeDirectory);
        if (exif.thumbnail() != null) writeThumbnail(exif.thumbnail());
        writeArray("notes", exif.notes(), mJson::writeString);
        mJson.writeEndObject();
    }

    private void writeDirectory(ExifDirectory directory) throws IOException {
        mJson.writeStartObject();
        mJson.writeStringField("name", directory.name());
        mJson.writeNumberField("offset", directory.offset());
        writeArray("entries", directory.entries(), this::writeEntry);
        mJson.writeEndObject();
    }

    private void writeEntry(ExifEntry entry) throws IOException {
        mJson.writeStartObject();
        mJson.writeNumberField("tag", entry.tag());
        if (entry.name() != null) mJson.writeStringField("name", entry.name());
        mJson.writeStringField("type", entry.type());
        mJson.writeNumberField("count", entry.count());
        mJson.writeStringField("value", entry.value());
        mJson.writeEndObject();
    }

    private void writeThumbnail(Thumbnail thumbnail) throws IOException {
        mJson.writeObjectFieldStart("thumbnail");
        if (thumbnail.offset() >= 0) mJson.writeNumberField("offset", thumbnail.offset());
        if (thumbnail.size() >= 0) mJson.writeNumberField("size", thumbnail.size());
        if (thumbnail.problem() == null) {
            mJson.writeNumberField("width", thumbnail.width());
            mJson.writeNumberField("height", thumbnail.height());
        } else {
            mJson.writeStringField("problem", thumbnail.problem());
        }
        mJson.writeEndObject();
    }

    private void writeXmp(XmpPacket xmp) throws IOException {
        mJson.writeStartObject();
        mJson.writeNumberField("item", xmp.itemId());
        mJson.writeNumberField("size", xmp.bytes().length);
        mJson.writeStringField("text", xmp.text());
        mJson.writeEndObject();
    }
}
