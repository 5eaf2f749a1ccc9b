#include "http/Routes.h"

#include "http/EventStream.h"

namespace boardweb {

namespace {

constexpr struct {
    std::string_view path;
    Question question;
} QUESTIONS[] = {
    {"/status", Question::STATUS},
    {"/leds", Question::LEDS},
    {"/descriptor", Question::DESCRIPTOR},
    {"/metrics", Question::METRICS},
};

const char* headerOf(const Exchange& exchange, const char* name) {
    const char* const value =
        MHD_lookup_connection_value(exchange.connection(), MHD_HEADER_KIND, name);
    return value ? value : "";
}

MHD_Result queue(const Exchange& exchange, unsigned status, MHD_Response& response) {
    return MHD_queue_response(exchange.connection(), status, &response);
}

} // namespace

MHD_Result Routes::refuse(const Exchange& exchange, const RequestHead& head) const {
    const unsigned status = refusalOf(head, m_names);
    return queue(exchange, status, m_fixed.refusal(status));
}

MHD_Result Routes::answer(Exchange& exchange, const RequestHead& head) const {
    if (refusalOf(head, m_names) != 0)
        return refuse(exchange, head);
    for (const auto& [path, question] : QUESTIONS)
        if (head.path == path)
            return answerFromHost(exchange, question);
    if (head.path == "/history")
        return queue(exchange, MHD_HTTP_OK, *responseOf(JSON_TYPE, m_sources.history.text()));
    if (head.path == "/events")
        return answerWithEvents(exchange);
    if (const FixedResponses::Page* const page = m_fixed.page(head.path))
        return answerWithPage(exchange, *page);
    return queue(exchange, MHD_HTTP_NOT_FOUND, m_fixed.refusal(MHD_HTTP_NOT_FOUND));
}

MHD_Result Routes::answerFromHost(Exchange& exchange, Question question) const {
    if (!exchange.answer()) {
        m_sources.questions.ask(question, exchange);
        return MHD_YES;
    }
    const Answer& answer = *exchange.answer();
    const bool isText = answer.isReply && question == Question::METRICS;
    return queue(exchange, answer.isReply ? MHD_HTTP_OK : MHD_HTTP_SERVICE_UNAVAILABLE,
                 *responseOf(isText ? METRICS_TYPE : JSON_TYPE, answer.text));
}

MHD_Result Routes::answerWithPage(const Exchange& exchange,
                                  const FixedResponses::Page& page) const {
    const std::string_view known = headerOf(exchange, MHD_HTTP_HEADER_IF_NONE_MATCH);
    return known.find(page.tag) == std::string_view::npos
               ? queue(exchange, MHD_HTTP_OK, *page.whole)
               : queue(exchange, MHD_HTTP_NOT_MODIFIED, *page.unchanged);
}

MHD_Result Routes::answerWithEvents(Exchange& exchange) const {
    const Response stream =
        eventStream(m_sources.feed, headerOf(exchange, "Last-Event-ID"), exchange);
    if (!stream)
        return queue(exchange, MHD_HTTP_SERVICE_UNAVAILABLE, m_fixed.tooManyStreams());
    m_exchanges.stream(exchange);
    return queue(exchange, MHD_HTTP_OK, *stream);
}

} // namespace boardweb
